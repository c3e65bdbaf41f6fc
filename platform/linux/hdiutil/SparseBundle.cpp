// SPDX-License-Identifier: Apache-2.0
#include "platform/linux/hdiutil/SparseBundle.h"

#include "platform/FileManager.h"
#include "platform/Format.h"
#include "platform/PropertyList.h"
#include "platform/linux/hdiutil/BandedRead.h"
#include "platform/linux/hdiutil/Encryption.h"

#include <algorithm>
#include <cerrno>
#include <charconv>
#include <filesystem>
#include <optional>
#include <system_error>
#include <utility>

namespace platform::hdiutil {
namespace {

constexpr std::size_t maximumListSize = std::size_t{1} << 20;
// Smaller ones, which nobody makes, would cost the search for a file every few bytes.
constexpr std::int64_t minimumBandSize = 512;
constexpr std::int64_t maximumBandSize = std::int64_t{1} << 40;

std::optional<PropertyList> descriptionAt(const std::string& path) {
    const auto contents = FileManager::contentsAtPath(path + "/Info.plist", maximumListSize);
    return contents ? PropertyList::parse(*contents) : std::nullopt;
}

// The positive number under `key`, or 0.
std::int64_t numberIn(const PropertyList& list, const char* key) {
    const PropertyList* const value = list.valueForKey(key);
    const auto* number = value == nullptr ? nullptr : std::get_if<std::int64_t>(&value->value());
    return number == nullptr || *number < 0 ? 0 : *number;
}

// The number of the band that a file of this name holds.
std::optional<std::uint64_t> bandOfName(const std::string& name) {
    std::uint64_t number = 0;
    std::from_chars(name.data(), name.data() + name.size(), number, 16);
    return format("{:x}", number) == name ? std::optional(number) : std::nullopt;
}

// Those in the folder, which need not exist; nullopt, with errno set, when it cannot be read.
std::optional<std::vector<std::uint64_t>> bandsIn(const std::string& folder) {
    std::vector<std::uint64_t> numbers;
    std::error_code error;
    std::filesystem::directory_iterator files(folder, error);
    for (; !error && files != std::filesystem::directory_iterator(); files.increment(error)) {
        if (const auto number = bandOfName(files->path().filename())) {
            numbers.push_back(*number);
        }
    }
    if (error && error != std::errc::no_such_file_or_directory) {
        errno = error.value();
        return std::nullopt;
    }
    std::ranges::sort(numbers);
    return numbers;
}

} // namespace

bool SparseBundle::isSparseBundle(const std::string& path) {
    const auto list = descriptionAt(path);
    const PropertyList* const type = list ? list->valueForKey("diskimage-bundle-type") : nullptr;
    return type != nullptr && type->string() != nullptr &&
           type->string()->starts_with("com.apple.diskimage.sparsebundle");
}

std::variant<std::shared_ptr<const SparseBundle>, std::string>
SparseBundle::open(const std::string& path) {
    const auto list = descriptionAt(path);
    const std::int64_t bandSize = list ? numberIn(*list, "band-size") : 0;
    const std::int64_t size = list ? numberIn(*list, "size") : 0;
    if (bandSize < minimumBandSize || bandSize > maximumBandSize || size == 0) {
        return "the description of the sparse bundle is damaged";
    }
    auto bands = bandsIn(path + "/bands");
    if (!bands) {
        return std::generic_category().message(errno);
    }
    return std::shared_ptr<const SparseBundle>(
        new SparseBundle(path, static_cast<std::uint64_t>(size),
                         static_cast<std::uint64_t>(bandSize), *std::move(bands)));
}

std::string SparseBundle::pathOfBand(std::uint64_t number) const {
    return format("{}/bands/{:x}", m_path, number);
}

bool SparseBundle::read(std::uint64_t offset, std::span<std::byte> buffer) const {
    return isInside(offset, buffer.size(), m_size) &&
           readInBands(m_bandSize, offset, buffer,
                       [this](std::uint64_t number, std::uint64_t inside, auto piece) {
                           return readBand(number, inside, piece);
                       });
}

// A band that is missing, or ends early, is zeros from there on.
bool SparseBundle::readBand(std::uint64_t number, std::uint64_t offset,
                            std::span<std::byte> buffer) const {
    const std::string path = pathOfBand(number);
    const auto band = FileSource::open(path);
    if (!band) {
        std::ranges::fill(buffer, std::byte{0});
        return !FileManager::fileExistsAtPath(path);
    }
    const auto there = static_cast<std::size_t>(
        std::min<std::uint64_t>(buffer.size(), band->size() - std::min(offset, band->size())));
    std::ranges::fill(buffer.subspan(there), std::byte{0});
    return band->read(std::min(offset, band->size()), buffer.first(there));
}

std::uint64_t SparseBundle::nextData(std::uint64_t offset) const {
    return nextDataInBands(
        m_bandSize, offset, m_size,
        [this](std::uint64_t number) {
            const auto band = std::ranges::lower_bound(m_bands, number);
            return band == m_bands.end() ? std::nullopt : std::optional(*band);
        },
        [this](std::uint64_t number, std::uint64_t inside) {
            return nextDataInBand(number, inside);
        });
}

// One that cannot be opened may be anything; whoever reads it learns that.
std::uint64_t SparseBundle::nextDataInBand(std::uint64_t number, std::uint64_t offset) const {
    const auto band = FileSource::open(pathOfBand(number));
    const std::uint64_t next = band ? band->nextData(offset) : offset;
    return band && next == band->size() ? m_bandSize : next;
}

bool SparseBundle::isEncrypted() const {
    const auto token = FileSource::open(m_path + "/token");
    return token && isEncryptedImage(*token);
}

std::uint64_t SparseBundle::storedBytes() const {
    std::uint64_t bytes = 0;
    for (const std::uint64_t number : m_bands) {
        std::error_code error;
        const std::uintmax_t size = std::filesystem::file_size(pathOfBand(number), error);
        bytes += error ? 0 : size;
    }
    return bytes;
}

} // namespace platform::hdiutil
