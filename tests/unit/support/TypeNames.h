// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "platform/UniformType.h"

#include <algorithm>
#include <cctype>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

/// What the tests of uniform types share.

using Pairs = std::vector<std::pair<std::string, std::string>>;

inline std::string fileType(std::string_view extension) {
    using namespace platform::UniformType;
    return identifierForItem(ItemKind::file, extension);
}

inline std::string folderType(std::string_view extension) {
    using namespace platform::UniformType;
    return identifierForItem(ItemKind::folder, extension);
}

inline std::string upperCased(std::string text) {
    std::transform(text.begin(), text.end(), text.begin(), [](unsigned char character) {
        return static_cast<char>(std::toupper(character));
    });
    return text;
}
