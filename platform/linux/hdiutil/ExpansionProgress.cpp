// SPDX-License-Identifier: Apache-2.0
#include "platform/linux/hdiutil/ExpansionProgress.h"

#include "platform/FileManager.h"
#include "platform/linux/ByteOrder.h"
#include "platform/linux/ByteText.h"

#include <algorithm>
#include <string_view>

namespace platform::hdiutil {
namespace {

// The number that changes stands there twice, the second time with all bits turned over.
constexpr std::size_t startSize = 16;
constexpr std::size_t signatureOffset = startSize;
constexpr std::string_view signature = "qmexpan1";
constexpr std::size_t sizeOffset = 24;
constexpr std::size_t inodeOffset = 32;
constexpr std::size_t bootOffset = 40;
constexpr std::size_t bootLength = 36;
constexpr std::size_t stateOffset = bootOffset + bootLength;
constexpr std::size_t imageOffset = stateOffset + Digest::sha256Length;

static_assert(imageOffset + 4096 + Digest::sha256Length <= ExpansionProgress::maximumSize);

void append(Data& data, DataView bytes) {
    data.insert(data.end(), bytes.begin(), bytes.end());
}

void append(Data& data, std::uint64_t number) {
    appendBigEndian(data, number, sizeof number);
}

auto digestOf(DataView bytes) {
    Digest::SHA256 digest;
    digest.update(bytes);
    return digest.finish();
}

bool isSealed(DataView bytes) {
    const auto end = bytes.size() - Digest::sha256Length;
    return std::ranges::equal(digestOf(bytes.subspan(startSize, end - startSize)),
                              bytes.subspan(end));
}

} // namespace

Data ExpansionProgress::serialized() const {
    Data data;
    append(data, startOf(written));
    append(data, bytesOf(signature));
    append(data, diskSize);
    append(data, diskInode);
    std::string name = boot;
    name.resize(bootLength);
    append(data, bytesOf(name));
    append(data, state.digest);
    append(data, bytesOf(image));
    append(data, digestOf(DataView(data).subspan(startSize)));
    return data;
}

std::optional<ExpansionProgress> ExpansionProgress::parse(DataView bytes) {
    if (bytes.size() < imageOffset + Digest::sha256Length || bytes.size() > maximumSize ||
        !hasTextAt(bytes, signatureOffset, signature) || !isSealed(bytes)) {
        return std::nullopt;
    }
    ExpansionProgress progress;
    progress.written = bigEndian<std::uint64_t>(bytes, 0);
    progress.diskSize = bigEndian<std::uint64_t>(bytes, sizeOffset);
    progress.diskInode = bigEndian<std::uint64_t>(bytes, inodeOffset);
    if (bigEndian<std::uint64_t>(bytes, sizeof progress.written) != ~progress.written ||
        progress.written > progress.diskSize) {
        return std::nullopt;
    }
    progress.boot = charactersOf(bytes.subspan(bootOffset, bootLength));
    std::ranges::copy(bytes.subspan(stateOffset, Digest::sha256Length),
                      progress.state.digest.begin());
    const std::size_t end = bytes.size() - Digest::sha256Length;
    progress.image = charactersOf(bytes.subspan(imageOffset, end - imageOffset));
    return progress;
}

std::array<std::byte, 16> ExpansionProgress::startOf(std::uint64_t written) {
    Data data;
    append(data, written);
    append(data, ~written);
    std::array<std::byte, startSize> start{};
    std::ranges::copy(data, start.begin());
    return start;
}

std::string currentBoot() {
    const auto contents = FileManager::contentsAtPath("/proc/sys/kernel/random/boot_id", 64);
    return contents && contents->size() >= bootLength
               ? std::string(charactersOf(*contents).substr(0, bootLength))
               : std::string();
}

} // namespace platform::hdiutil
