// SPDX-License-Identifier: Apache-2.0
#include "platform/linux/hdiutil/Encryption.h"

#include "platform/Data.h"

#include <algorithm>
#include <array>
#include <string_view>

namespace platform::hdiutil {
namespace {

constexpr std::size_t markSize = 8;
constexpr std::string_view header = "encrcdsa";
constexpr std::string_view trailer = "cdsaencr";

bool hasMark(const ByteSource& file, std::uint64_t offset, std::string_view mark) {
    std::array<std::byte, markSize> bytes{};
    return file.read(offset, bytes) && std::ranges::equal(bytes, bytesOf(mark));
}

} // namespace

bool isEncryptedImage(const ByteSource& file) {
    return hasMark(file, 0, header) ||
           (file.size() >= markSize && hasMark(file, file.size() - markSize, trailer));
}

} // namespace platform::hdiutil
