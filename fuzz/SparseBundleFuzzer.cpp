// SPDX-License-Identifier: Apache-2.0
// Makes a sparse bundle of bytes, and compares its disk with what its bands say.
//
// The input: a byte, 0 for a description that follows behind its length in two bytes, else the size
// of a band and of the disk in eight bytes each; then bands: the name behind a byte with its
// length, a byte (1: it is a folder), the contents behind their length in two bytes. Numbers have
// their least significant byte first.
#include "fuzz/Fuzzing.h"
#include "platform/Format.h"
#include "platform/PropertyList.h"
#include "platform/linux/hdiutil/SparseBundle.h"
#include "tests/unit/support/TemporaryFolder.h"

#include <algorithm>
#include <map>
#include <optional>

namespace {

using fuzzing::require;
using platform::hdiutil::SparseBundle;

constexpr std::uint64_t maximumStretch = 4096;
// By name; nullopt for a folder, which cannot be read.
using Bands = std::map<std::string, std::optional<std::string>>;

std::string described(std::uint64_t bandSize, std::uint64_t size) {
    const platform::PropertyList::Dictionary values{
        {"diskimage-bundle-type", "com.apple.diskimage.sparsebundle"},
        {"band-size", static_cast<std::int64_t>(bandSize)},
        {"size", static_cast<std::int64_t>(size)}};
    const auto list =
        platform::PropertyList(values).serialized(platform::PropertyList::Format::binary);
    return std::string(platform::charactersOf(list));
}

std::string descriptionIn(fuzzing::Input& input) {
    if (input.number(1) == 0) {
        return input.text(2);
    }
    const std::uint64_t bandSize = input.number(8);
    return described(bandSize, input.number(8));
}

bool isFileName(const std::string& name) {
    return !name.empty() && name != "." && name != ".." &&
           name.find_first_of(std::string_view("/\0", 2)) == std::string::npos;
}

Bands bandsIn(fuzzing::Input& input) {
    constexpr std::size_t enough = 16;
    Bands bands;
    for (std::size_t i = 0; i < enough && !input.isEmpty(); ++i) {
        const std::string name = input.text(1);
        const bool isFolder = input.number(1) == 1;
        const std::string contents = input.text(2);
        if (isFileName(name)) {
            bands.insert_or_assign(name, isFolder ? std::nullopt : std::optional(contents));
        }
    }
    return bands;
}

void write(const TemporaryFolder& bundle, const std::string& description, const Bands& bands) {
    static_cast<void>(bundle.file("Info.plist", description));
    std::filesystem::remove_all(bundle.path("bands"));
    static_cast<void>(bundle.folder("bands"));
    for (const auto& [name, contents] : bands) {
        static_cast<void>(contents ? bundle.file("bands/" + name, *contents)
                                   : bundle.folder("bands/" + name));
    }
}

// What the disk has there, by its bands; nullopt where one of them cannot be read.
std::optional<std::string> expected(const Bands& bands, std::uint64_t bandSize,
                                    std::uint64_t offset, std::uint64_t length) {
    std::string bytes;
    while (bytes.size() < length) {
        const std::uint64_t place = offset + bytes.size();
        const std::uint64_t inside = place % bandSize;
        const std::uint64_t wanted = std::min(bandSize - inside, length - bytes.size());
        const auto band = bands.find(platform::format("{:x}", place / bandSize));
        if (band != bands.end() && !band->second) {
            return std::nullopt;
        }
        std::string piece;
        if (band != bands.end()) {
            piece = band->second->substr(std::min(inside, band->second->size()), wanted);
        }
        piece.resize(wanted);
        bytes.append(piece);
    }
    return bytes;
}

void checkStretch(const SparseBundle& bundle, const Bands& bands, std::uint64_t bandSize,
                  std::uint64_t offset, std::uint64_t length) {
    std::string bytes(length, '?');
    const bool isRead = bundle.read(offset, std::as_writable_bytes(std::span(bytes)));
    require((isRead ? std::optional(bytes) : std::nullopt) ==
            expected(bands, bandSize, offset, length));
}

// Where no data is said to be, there are zeros.
void checkHoles(const SparseBundle& bundle, const Bands& bands, std::uint64_t bandSize) {
    constexpr int enough = 64;
    std::uint64_t offset = 0;
    for (int i = 0; i < enough && offset < bundle.size(); ++i) {
        const std::uint64_t next = bundle.nextData(offset);
        require(offset <= next && next <= bundle.size());
        const std::uint64_t hole = std::min(next - offset, maximumStretch);
        require(expected(bands, bandSize, offset, hole) == std::string(hole, '\0'));
        require(expected(bands, bandSize, next - hole, hole) == std::string(hole, '\0'));
        offset = next + std::min(bandSize, bundle.size() - next);
    }
}

void checkDisk(const SparseBundle& bundle, const Bands& bands, std::uint64_t bandSize) {
    const std::uint64_t size = bundle.size();
    const std::uint64_t length = std::min(size, maximumStretch);
    checkStretch(bundle, bands, bandSize, 0, length);
    checkStretch(bundle, bands, bandSize, size - length, length);
    checkStretch(bundle, bands, bandSize, length / 2, length - length / 2);
    checkHoles(bundle, bands, bandSize);
    std::byte byte{};
    require(bundle.read(size, {}));
    require(!bundle.read(size, {&byte, 1}) && !bundle.read(UINT64_MAX, {&byte, 1}));
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    static const TemporaryFolder folder;
    fuzzing::Input input(data, size);
    const std::string description = descriptionIn(input);
    const Bands bands = bandsIn(input);
    write(folder, description, bands);
    const auto opened = SparseBundle::open(folder.path());
    const auto* bundle = std::get_if<std::shared_ptr<const SparseBundle>>(&opened);
    if (bundle == nullptr) {
        require(!std::get<std::string>(opened).empty());
        return 0;
    }
    const auto list = platform::PropertyList::parse(std::as_bytes(std::span(description)));
    const auto* const bandSize = list ? list->valueForKey("band-size") : nullptr;
    require(bandSize != nullptr && (*bundle)->storedBytes() <= size && !(*bundle)->isEncrypted());
    checkDisk(**bundle, bands,
              static_cast<std::uint64_t>(std::get<std::int64_t>(bandSize->value())));
    return 0;
}
