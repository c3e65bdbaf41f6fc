// SPDX-License-Identifier: Apache-2.0
#include "platform/linux/media/ColorProfile.h"

#include "platform/linux/ByteOrder.h"
#include "platform/linux/ByteText.h"
#include "platform/linux/Utf16.h"
#include "platform/linux/media/ImageText.h"

#include <bit>
#include <memory>
#include <type_traits>
#include <vector>

#include <lcms2.h>

namespace platform::media {
namespace {

struct CloseProfile {
    void operator()(cmsHPROFILE profile) const { ::cmsCloseProfile(profile); }
};
using Profile = std::unique_ptr<std::remove_pointer_t<cmsHPROFILE>, CloseProfile>;

// The library spreads units of UTF-16 over wide characters.
Data unitsOf(const std::vector<wchar_t>& text) {
    Data units;
    for (const wchar_t character : text) {
        appendBigEndian(units, std::bit_cast<std::uint32_t>(character), sizeof(char16_t));
    }
    return units;
}

} // namespace

std::optional<std::string> nameOfProfile(DataView profile) {
    constexpr cmsUInt32Number longestName = 4096;
    if (profile.size() > maximumProfileSize) {
        return std::nullopt;
    }
    const Profile opened(
        ::cmsOpenProfileFromMem(profile.data(), static_cast<cmsUInt32Number>(profile.size())));
    if (opened == nullptr) {
        return std::nullopt;
    }
    const auto read = [&opened](wchar_t* buffer, cmsUInt32Number size) {
        return ::cmsGetProfileInfo(opened.get(), cmsInfoDescription, "en", "US", buffer, size);
    };
    const cmsUInt32Number size = read(nullptr, 0);
    if (size == 0 || size > longestName) {
        return std::nullopt;
    }
    std::vector<wchar_t> name(size / sizeof(wchar_t) + 1);
    read(name.data(), size);
    return imageText(utf8FromUtf16(unitsOf(name), std::endian::big));
}

bool isGrayProfile(DataView profile) {
    constexpr std::size_t colorSpace = 16;
    return hasTextAt(profile, colorSpace, "GRAY");
}

} // namespace platform::media
