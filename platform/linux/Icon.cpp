// SPDX-License-Identifier: Apache-2.0
#include "platform/Icon.h"

#include "platform/ResourceValues.h"
#include "platform/UniformType.h"

#include <algorithm>
#include <array>
#include <string_view>

namespace platform {
namespace {

constexpr double defaultSize = 32;

struct NamedIcon {
    std::string_view type;
    std::string_view name;
};

// The first row that a type conforms to decides, so narrower types stand first.
constexpr std::array<NamedIcon, 18> icons{{
    {"public.volume", "drive-harddisk"},
    {"com.apple.application-bundle", "application-x-executable"},
    {"com.apple.package", "package-x-generic"},
    {"public.directory", "folder"},
    {"public.symlink", "emblem-symbolic-link"},
    {"public.disk-image", "media-optical"},
    {"public.archive", "package-x-generic"},
    {"public.font", "font-x-generic"},
    {"public.image", "image-x-generic"},
    {"public.audio", "audio-x-generic"},
    {"public.movie", "video-x-generic"},
    {"public.spreadsheet", "x-office-spreadsheet"},
    {"public.presentation", "x-office-presentation"},
    {"public.html", "text-html"},
    {"public.script", "text-x-script"},
    {"public.text", "text-x-generic"},
    {"public.executable", "application-x-executable"},
    {"public.composite-content", "x-office-document"},
}};

constexpr std::string_view unknownIcon = "application-octet-stream";

std::string iconName(const std::string& type) {
    // The shared MIME database makes icon names of MIME types by turning the slash into a dash.
    if (const auto mime = UniformType::mimeType(type)) {
        std::string name(*mime);
        std::ranges::replace(name, '/', '-');
        return name;
    }
    const auto row = std::ranges::find_if(
        icons, [&type](const NamedIcon& icon) { return UniformType::conformsTo(type, icon.type); });
    return std::string(row == icons.end() ? unknownIcon : row->name);
}

} // namespace

Icon iconForType(const std::string& typeIdentifier) {
    return {iconName(typeIdentifier), defaultSize, defaultSize};
}

Icon iconForFile(const std::string& path) {
    const auto values = resourceValues(path, {ResourceKey::effectiveIcon});
    return values && values->effectiveIcon ? *values->effectiveIcon : iconForType({});
}

} // namespace platform
