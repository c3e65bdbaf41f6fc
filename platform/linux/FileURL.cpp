// SPDX-License-Identifier: Apache-2.0
#include "platform/FileURL.h"

#include "platform/FileManager.h"
#include "platform/PathString.h"
#include "platform/linux/Ascii.h"
#include "platform/linux/Hexadecimal.h"
#include "platform/linux/TextPieces.h"

namespace platform {
namespace {

// pchar and "/" of RFC 3986, section 3.3.
bool mayStandInPath(char c) {
    return isLetterOrDigit(c) ||
           std::string_view("-._~!$&'()*+,;=:@/").find(c) != std::string_view::npos;
}

std::optional<std::string> percentDecoded(std::string_view text) {
    std::string result;
    result.reserve(text.size());
    for (std::size_t i = 0; i < text.size(); ++i) {
        if (text[i] != '%') {
            result.push_back(text[i]);
            continue;
        }
        if (text.size() - i < 3) {
            return std::nullopt;
        }
        const auto high = hexadecimalDigit(text[i + 1]);
        const auto low = hexadecimalDigit(text[i + 2]);
        if (!high || !low) {
            return std::nullopt;
        }
        const auto byte = static_cast<char>(*high * 16 + *low);
        if (byte == '\0' || byte == '/') {
            return std::nullopt;
        }
        result.push_back(byte);
        i += 2;
    }
    return result;
}

bool consumePrefixIgnoringCase(std::string_view& text, std::string_view prefix) {
    if (!startsWithIgnoringCase(text, prefix)) {
        return false;
    }
    text.remove_prefix(prefix.size());
    return true;
}

} // namespace

FileURL FileURL::fromPath(std::string_view path) {
    if (path.starts_with('/')) {
        return FileURL(std::string(withoutTrailingSlashes(path)));
    }
    std::string absolute = FileManager::currentDirectoryPath();
    if (!absolute.empty() && !path.empty()) {
        absolute.push_back('/');
    }
    absolute.append(path);
    return FileURL(absolute.empty() ? "." : std::string(withoutTrailingSlashes(absolute)));
}

FileURL FileURL::fromDirectoryPath(std::string_view path) {
    FileURL url = fromPath(path);
    url.m_isMarked = url.m_path.size() > 1;
    return url;
}

std::optional<FileURL> FileURL::parse(std::string_view text) {
    if (!consumePrefixIgnoringCase(text, "file:")) {
        return std::nullopt;
    }
    if (text.starts_with("//")) {
        text.remove_prefix(2);
        consumePrefixIgnoringCase(text, "localhost");
    }
    text = text.substr(0, text.find_first_of("?#"));
    if (!text.starts_with('/') || text.find('\0') != std::string_view::npos) {
        return std::nullopt;
    }
    auto path = percentDecoded(text);
    if (!path) {
        return std::nullopt;
    }
    const bool isMarked = path->ends_with('/');
    FileURL url{std::string(withoutTrailingSlashes(*path))};
    url.m_isMarked = isMarked && url.m_path.size() > 1;
    return url;
}

std::string FileURL::lastPathComponent() const {
    return PathString::lastPathComponent(m_path);
}

std::string FileURL::absoluteString() const {
    std::string text = m_path.starts_with('/') ? "file://" : "file:";
    for (const char c : m_path) {
        if (mayStandInPath(c)) {
            text.push_back(c);
            continue;
        }
        text.push_back('%');
        appendHexadecimal(text, static_cast<unsigned char>(c), 2);
    }
    if (m_isMarked) {
        text.push_back('/');
    }
    return text;
}

} // namespace platform
