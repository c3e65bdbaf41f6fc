// SPDX-License-Identifier: Apache-2.0
#include "cli/Console.h"
#include "foundation/QMDiskImageExtensions.h"
#include "foundation/QMString.h"
#include "fuzz/Fuzzing.h"
#include "platform/PathString.h"

#include <algorithm>

namespace {

namespace PathString = platform::PathString;
using fuzzing::require;

bool hasSlashRun(const std::string& path) {
    return path.find("//") != std::string::npos;
}

bool endsInSlash(const std::string& path) {
    return path.size() > 1 && path.ends_with('/');
}

/// Extension and the rest are the parts of the last component, byte by byte.
void checkParts(const std::string& path) {
    const std::string last = PathString::lastPathComponent(path);
    const std::string extension = PathString::pathExtension(path);
    const std::string rest = PathString::deletingPathExtension(path);
    require(last == "/" || last.find('/') == std::string::npos);
    require(path.find(last) != std::string::npos);
    require(!hasSlashRun(rest) && !endsInSlash(rest));
    require(PathString::lastPathComponent(last) == last);
    const std::string restOfLast = PathString::deletingPathExtension(last);
    if (extension.empty()) {
        require(restOfLast == last);
    } else {
        require(std::string(restOfLast).append(1, '.').append(extension) == last);
    }
    require(qm_pathExtensionLowercased(path).empty() == extension.empty());
    require(qm_isHiddenFileName(path) == last.starts_with('.'));
    require(!qm_hasMountableDiskImageExtension(path) || !extension.empty());
}

void checkJoin(const std::string& path, const std::string& component) {
    const std::string joined = PathString::appendingPathComponent(path, component);
    require(!hasSlashRun(joined) && !endsInSlash(joined));
    require(joined.size() <= path.size() + component.size() + 1);
    const bool plain = !component.empty() && component.find('/') == std::string::npos;
    require(!plain || PathString::lastPathComponent(joined) == component);
}

void checkStandardForm(const std::string& path) {
    const std::string standard = PathString::standardizing(path);
    require(!hasSlashRun(standard) && !endsInSlash(standard));
    if (standard.starts_with('/')) {
        require(PathString::standardizing(standard) == standard);
        require(!standard.ends_with("/..") && standard.find("/../") == std::string::npos);
    }
    const std::string absolute = qm_absolutePath(path);
    require(absolute.starts_with('/'));
    require(!path.starts_with('/') || absolute == path);
}

void checkAbbreviation(const std::string& path) {
    const std::string abbreviated = qm_abbreviatedPath(path);
    require(abbreviated == path || abbreviated.starts_with('~'));
    require(abbreviated.size() <= path.size());
}

} // namespace

/// The input is two texts, parted by the first line break.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    std::string text = fuzzing::textOf(data, size);
    std::replace(text.begin(), text.end(), '\0', '0'); // no path holds a NUL
    const auto end = std::min(text.find('\n'), text.size());
    const std::string path = text.substr(0, end);
    const std::string component = text.substr(std::min(end + 1, text.size()));
    checkParts(path);
    checkJoin(path, component);
    checkStandardForm(path);
    checkAbbreviation(path);
    require(!qm_uniquePathInDirectory(component, "/nonexistent").empty());
    return 0;
}
