// SPDX-License-Identifier: Apache-2.0
#include "foundation/QMString.h"

#include "platform/ByteCountFormatter.h"
#include "platform/Collation.h"
#include "platform/FileManager.h"
#include "platform/Format.h"
#include "platform/PathString.h"
#include "platform/UniformType.h"

namespace PathString = platform::PathString;

bool qm_utiConformsTo(std::string_view identifier, std::string_view other) {
    return platform::UniformType::conformsTo(identifier, other);
}

std::string qm_humanReadableSize(std::int64_t byteCount) {
    return platform::ByteCountFormatter::fileStyle(byteCount);
}

std::string qm_pathExtensionLowercased(std::string_view path) {
    return platform::Collation::lowercase(PathString::pathExtension(path));
}

bool qm_isHiddenFileName(std::string_view path) {
    return PathString::lastPathComponent(path).starts_with('.');
}

std::string qm_uniquePathInDirectory(std::string_view name, std::string_view directory) {
    constexpr unsigned highestNumber = 9999;
    const std::string extension = PathString::pathExtension(name);
    const std::string base = PathString::deletingPathExtension(name);
    std::string candidate = PathString::appendingPathComponent(directory, name);
    for (unsigned number = 2;
         number <= highestNumber && platform::FileManager::fileExistsAtPath(candidate); ++number) {
        const std::string numbered = extension.empty()
                                         ? platform::format("{} ({})", base, number)
                                         : platform::format("{} ({}).{}", base, number, extension);
        candidate = PathString::appendingPathComponent(directory, numbered);
    }
    return candidate;
}

std::string qm_joined(const std::vector<std::string>& texts, std::string_view separator) {
    std::string result;
    for (std::size_t i = 0; i < texts.size(); ++i) {
        result.append(i == 0 ? std::string_view() : separator).append(texts[i]);
    }
    return result;
}

std::string qm_abbreviatedPath(std::string_view path) {
    return PathString::abbreviatingWithTilde(path);
}
