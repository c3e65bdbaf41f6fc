// SPDX-License-Identifier: Apache-2.0
#include "platform/linux/DesktopEntry.h"

#include "platform/linux/TextPieces.h"

#include <cstddef>
#include <functional>
#include <map>

namespace platform {
namespace {

constexpr auto npos = std::string_view::npos;
constexpr std::string_view yes = "true";
using Values = std::map<std::string_view, std::string_view, std::less<>>;

std::string_view trimmed(std::string_view text) {
    constexpr std::string_view blanks = " \t\r";
    const auto start = text.find_first_not_of(blanks);
    return start == npos ? std::string_view()
                         : text.substr(start, text.find_last_not_of(blanks) - start + 1);
}

// The keys of the group "Desktop Entry"; of equals the last counts.
std::optional<Values> readGroup(std::string_view text) {
    std::optional<Values> values;
    bool isInside = false;
    while (!text.empty()) {
        const std::string_view line = trimmed(takePiece(text, '\n'));
        if (line.starts_with('[')) {
            isInside = line == "[Desktop Entry]";
            if (isInside && !values) {
                values.emplace();
            }
        } else if (const auto equals = line.find('=');
                   isInside && equals != npos && !line.starts_with('#')) {
            (*values)[trimmed(line.substr(0, equals))] = trimmed(line.substr(equals + 1));
        }
    }
    return values;
}

std::string_view valueOf(const Values& values, std::string_view key) {
    const auto found = values.find(key);
    return found == values.end() ? std::string_view() : found->second;
}

bool describesApplication(const Values& values) {
    const std::string_view type = valueOf(values, "Type");
    return (type.empty() || type == "Application") && valueOf(values, "Hidden") != yes;
}

// Undoes the escapes of values of the type "string". Others are left for the quoting rules.
std::string unescaped(std::string_view value) {
    constexpr std::string_view letters = "sntr\\";
    constexpr std::string_view meanings = " \n\t\r\\";
    std::string result;
    for (std::size_t i = 0; i < value.size(); ++i) {
        const auto letter =
            value[i] == '\\' && i + 1 < value.size() ? letters.find(value[i + 1]) : npos;
        if (letter == npos) {
            result.push_back(value[i]);
        } else {
            result.push_back(meanings[letter]);
            ++i;
        }
    }
    return result;
}

/// Splits an Exec line, one character or escape at a time.
class ExecReader {
public:
    explicit ExecReader(std::string_view text)
        : m_rest(text) {}

    std::optional<std::vector<std::string>> read() {
        while (!m_rest.empty()) {
            if (!step()) {
                return std::nullopt;
            }
        }
        if (m_quote != '\0') {
            return std::nullopt;
        }
        endWord();
        return std::move(m_words);
    }

private:
    bool step() {
        const char c = m_rest.front();
        m_rest.remove_prefix(1);
        if (c == '%') {
            return readFieldCode();
        }
        if (m_quote != '\0') {
            readQuoted(c);
        } else if (c == ' ' || c == '\t' || c == '\n') {
            endWord();
        } else if (c == '"' || c == '\'') {
            m_quote = c;
            m_isQuoted = true;
        } else {
            append(c == '\\' && !m_rest.empty() ? take() : c);
        }
        return true;
    }

    void readQuoted(char c) {
        constexpr std::string_view escapable = "\"`$\\";
        if (c == m_quote) {
            m_quote = '\0';
        } else if (c == '\\' && m_quote == '"' && !m_rest.empty() &&
                   escapable.find(m_rest.front()) != npos) {
            append(take());
        } else {
            append(c);
        }
    }

    bool readFieldCode() {
        constexpr std::string_view known = "fFuUdDnNickvm";
        const char code = m_rest.empty() ? '\0' : take();
        if (code == '%') {
            append('%');
            return true;
        }
        m_hasFieldCode = true;
        return code != '\0' && known.find(code) != npos;
    }

    // A word of nothing but field codes vanishes, while "" is an empty word.
    void endWord() {
        if (!m_word.empty() || (m_isQuoted && !m_hasFieldCode)) {
            m_words.push_back(std::move(m_word));
        }
        m_word.clear();
        m_isQuoted = false;
        m_hasFieldCode = false;
    }

    void append(char c) { m_word.push_back(c); }

    char take() {
        const char c = m_rest.front();
        m_rest.remove_prefix(1);
        return c;
    }

    std::string_view m_rest;
    std::vector<std::string> m_words;
    std::string m_word;
    char m_quote = '\0'; ///< the open quotation mark, or NUL
    bool m_isQuoted = false;
    bool m_hasFieldCode = false;
};

} // namespace

std::optional<DesktopEntry> DesktopEntry::parse(std::string_view text) {
    const auto values = text.find('\0') == npos ? readGroup(text) : std::nullopt;
    if (!values || !describesApplication(*values)) {
        return std::nullopt;
    }
    DesktopEntry entry;
    entry.isBusActivatable = valueOf(*values, "DBusActivatable") == yes;
    entry.command = words(unescaped(valueOf(*values, "Exec"))).value_or(entry.command);
    entry.workingDirectory = unescaped(valueOf(*values, "Path"));
    entry.requiredProgram = unescaped(valueOf(*values, "TryExec"));
    return entry;
}

std::optional<std::vector<std::string>> DesktopEntry::words(std::string_view exec) {
    return ExecReader(exec).read();
}

} // namespace platform
