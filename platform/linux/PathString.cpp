// SPDX-License-Identifier: Apache-2.0
#include "platform/PathString.h"

#include "platform/FileManager.h"
#include "platform/linux/TextPieces.h"

#include <algorithm>
#include <array>
#include <vector>

namespace platform::PathString {
namespace {

constexpr auto npos = std::string_view::npos;

std::string collapsingSlashes(std::string_view path) {
    std::string result;
    result.reserve(path.size());
    for (const char c : path) {
        if (c != '/' || result.empty() || result.back() != '/') {
            result.push_back(c);
        }
    }
    return std::string(withoutTrailingSlashes(result));
}

std::string_view lastComponent(std::string_view path) {
    path = withoutTrailingSlashes(path);
    const auto slash = path.rfind('/');
    return slash == npos || path.size() == 1 ? path : path.substr(slash + 1);
}

// U+061C, U+200E, U+200F, U+202A-U+202E, U+2066-U+2069 as UTF-8: with one of them in it, the
// extension that a reader sees is not the one that the bytes hold.
bool holdsBidiControl(std::string_view text) {
    if (text.find("\xD8\x9C") != npos) {
        return true;
    }
    for (auto at = text.find('\xE2'); at != npos; at = text.find('\xE2', at + 1)) {
        if (text.size() - at < 3) {
            return false;
        }
        const auto second = static_cast<unsigned char>(text[at + 1]);
        const auto third = static_cast<unsigned char>(text[at + 2]);
        const bool mark = second == 0x80 && (third == 0x8E || third == 0x8F);
        const bool embedding = second == 0x80 && third >= 0xAA && third <= 0xAE;
        const bool isolate = second == 0x81 && third >= 0xA6 && third <= 0xA9;
        if (mark || embedding || isolate) {
            return true;
        }
    }
    return false;
}

// Where the extension's dot stands in a last component, or npos.
std::size_t extensionDot(std::string_view component) {
    const auto dot = component.rfind('.');
    if (dot == npos || dot == 0 || dot + 1 == component.size()) {
        return npos;
    }
    const std::string_view base = component.substr(0, dot);
    const std::string_view extension = component.substr(dot + 1);
    if (base == "." || base == ".." || extension.find(' ') != npos || holdsBidiControl(extension)) {
        return npos;
    }
    return dot;
}

std::string expandingTilde(std::string_view path) {
    if (!path.starts_with('~')) {
        return std::string(path);
    }
    const auto slash = path.find('/');
    const std::string_view user = path.substr(1, slash == npos ? npos : slash - 1);
    const auto home = user.empty() ? FileManager::homeDirectory()
                                   : FileManager::homeDirectoryForUser(std::string(user));
    if (!home) {
        return std::string(path);
    }
    return *home + std::string(slash == npos ? std::string_view() : path.substr(slash));
}

std::vector<std::string_view> components(std::string_view path) {
    std::vector<std::string_view> result;
    while (!path.empty()) {
        const std::string_view component = takePiece(path, '/');
        if (!component.empty()) {
            result.push_back(component);
        }
    }
    return result;
}

std::string removingDots(std::string_view path) {
    const bool absolute = path.starts_with('/');
    std::vector<std::string_view> kept;
    for (const std::string_view component : components(path)) {
        if (component == ".") {
            continue;
        }
        const bool isParent = component == "..";
        if (isParent && !kept.empty() && kept.back() != "..") {
            kept.pop_back();
        } else if (!isParent || !absolute) {
            kept.push_back(component);
        }
    }
    std::string result = absolute ? "/" : "";
    for (const std::string_view component : kept) {
        if (!result.empty() && result.back() != '/') {
            result.push_back('/');
        }
        result.append(component);
    }
    return result.empty() && !path.empty() ? "." : result;
}

} // namespace

std::string lastPathComponent(std::string_view path) {
    return std::string(lastComponent(path));
}

std::string pathExtension(std::string_view path) {
    const std::string_view component = lastComponent(path);
    const auto dot = extensionDot(component);
    return dot == npos ? std::string() : std::string(component.substr(dot + 1));
}

std::string deletingPathExtension(std::string_view path) {
    std::string result = collapsingSlashes(path);
    const std::string_view component = lastComponent(result);
    const auto dot = extensionDot(component);
    if (dot != npos) {
        result.resize(result.size() - (component.size() - dot));
    }
    return result;
}

std::string appendingPathComponent(std::string_view path, std::string_view component) {
    if (path.empty()) {
        return collapsingSlashes(component);
    }
    std::string joined(path);
    joined.push_back('/');
    joined.append(component);
    return collapsingSlashes(joined);
}

std::string standardizing(std::string_view path) {
    const std::string collapsed = collapsingSlashes(expandingTilde(path));
    const auto parts = components(collapsed);
    if (std::ranges::find(parts, "..") != parts.end()) {
        if (auto resolved = FileManager::resolvingSymlinks(collapsed)) {
            return *std::move(resolved);
        }
    }
    return removingDots(collapsed);
}

std::string abbreviatingWithTilde(std::string_view path) {
    const auto home = FileManager::homeDirectory();
    if (path.empty() || path == "/" || !home || home->empty() || !path.starts_with(*home)) {
        return std::string(path);
    }
    const std::string_view rest = path.substr(home->size());
    return rest.empty() || rest.front() == '/' ? std::string(1, '~').append(rest)
                                               : std::string(path);
}

} // namespace platform::PathString
