// SPDX-License-Identifier: Apache-2.0
#include "platform/linux/pdf/Values.h"

#include "platform/linux/Ascii.h"

#include <algorithm>
#include <array>
#include <charconv>

namespace platform::pdf {
namespace {

using namespace std::string_view_literals;

constexpr std::size_t deepest = 32;

bool isBlank(char byte) {
    return byte == ' ' || byte == '\n' || byte == '\r' || byte == '\t' || byte == '\f' ||
           byte == '\0';
}

bool isDelimiter(char byte) {
    return "()<>[]{}/%"sv.find(byte) != std::string_view::npos;
}

// Answers how many there were.
template <class Test>
std::size_t skipWhile(const Test& test, std::string_view& text) {
    std::size_t count = 0;
    while (count < text.size() && test(text[count])) {
        ++count;
    }
    text.remove_prefix(count);
    return count;
}

void skipBlanks(std::string_view& text) {
    while (!text.empty() && (isBlank(text[0]) || text[0] == '%')) {
        std::size_t end = 1;
        if (text[0] == '%') {
            end = std::min(text.find_first_of("\r\n"), text.size());
        }
        text.remove_prefix(end);
    }
}

// All of these give 0 for what has no end in the text.

std::size_t lengthOfString(std::string_view text) {
    std::size_t level = 0;
    for (std::size_t place = 0; place < text.size(); ++place) {
        if (text[place] == '\\') {
            ++place;
        } else if (text[place] == '(') {
            ++level;
        } else if (text[place] == ')' && --level == 0) {
            return place + 1;
        }
    }
    return 0;
}

std::size_t lengthOfWord(std::string_view text) {
    std::size_t place = 1;
    while (place < text.size() && !isBlank(text[place]) && !isDelimiter(text[place])) {
        ++place;
    }
    return place < text.size() ? place : 0;
}

std::size_t lengthOfToken(std::string_view text) {
    if (text.empty()) {
        return 0;
    }
    switch (text[0]) {
    case '(': return lengthOfString(text);
    case '[':
    case ']': return 1;
    case '<': return text.starts_with("<<"sv) ? 2 : text.find('>') + 1;
    case '>': return text.starts_with(">>"sv) ? 2 : 0;
    case '{':
    case '}':
    case ')': return 0;
    default: return lengthOfWord(text);
    }
}

/// Which arrays and dictionaries are open.
class Brackets {
public:
    /// False for the end of what is not open, and for too many.
    bool add(std::string_view token) {
        if (token == "["sv || token == "<<"sv) {
            if (m_count == m_closing.size()) {
                return false;
            }
            m_closing[m_count++] = token == "["sv ? ']' : '>';
        } else if (token == "]"sv || token == ">>"sv) {
            return m_count > 0 && m_closing[--m_count] == token[0];
        }
        return true;
    }

    [[nodiscard]] bool areClosed() const { return m_count == 0; }

private:
    std::array<char, deepest> m_closing{};
    std::size_t m_count = 0;
};

// Whether there is nothing but references. All bytes are looked at, many at once.
bool looksLikeReferences(std::string_view text) {
    unsigned others = 0;
    for (const char byte : text) {
        const bool isGood = isDigit(byte) || byte == ' ' || byte == '\n' || byte == 'R';
        others |= isGood ? 0U : 1U;
    }
    return others == 0;
}

// Many pages are listed as many references, which need not be told apart to pass them.
void skipReferences(std::string_view& text) {
    const std::string_view list = text.substr(0, text.find(']'));
    text.remove_prefix(looksLikeReferences(list) ? list.size() : 0);
}

// Behind the number that was taken: the rest of a reference, if it is one; nullopt when the text
// might end within it.
std::optional<bool> takeReferenceEnd(std::string_view& text) {
    std::string_view rest = text;
    const auto generation = takeToken(rest);
    if (!generation) {
        return rest.size() < 2 || isDigit(rest[0]) ? std::nullopt : std::optional(false);
    }
    if (!integerOf(*generation)) {
        return false;
    }
    const auto mark = takeToken(rest);
    if (!mark && !(rest.size() >= 2 && rest[0] != 'R')) {
        return std::nullopt;
    }
    const bool isReference = mark && *mark == "R"sv;
    text = isReference ? rest : text;
    return isReference;
}

} // namespace

std::optional<std::string_view> takeToken(std::string_view& text) {
    skipBlanks(text);
    const auto token = text.substr(0, lengthOfToken(text));
    text.remove_prefix(token.size());
    return token.empty() ? std::nullopt : std::optional(token);
}

std::optional<std::string_view> takeValue(std::string_view& text) {
    skipBlanks(text);
    const char* const start = text.data();
    Brackets brackets;
    do {
        const auto token = takeToken(text);
        if (!token || !brackets.add(*token)) {
            return std::nullopt;
        }
        if (*token == "["sv) {
            skipReferences(text);
        } else if (brackets.areClosed() && integerOf(*token) && !takeReferenceEnd(text)) {
            return std::nullopt;
        }
    } while (!brackets.areClosed());
    return std::string_view(start, static_cast<std::size_t>(text.data() - start));
}

std::optional<std::uint64_t> integerOf(std::string_view value) {
    constexpr std::size_t longest = 18;
    std::uint64_t number = 0;
    const char* const end = value.data() + value.size();
    const bool isNumber = !value.empty() && value.size() <= longest && isDigit(value[0]) &&
                          std::from_chars(value.data(), end, number).ptr == end;
    return isNumber ? std::optional(number) : std::nullopt;
}

std::optional<Reference> referenceOf(std::string_view value) {
    if (!value.ends_with('R')) {
        return std::nullopt;
    }
    const auto number = integerOf(takeToken(value).value_or(""sv));
    const auto generation = integerOf(takeToken(value).value_or(""sv));
    if (!number || !generation || *number > largestNumber || *generation > largestNumber) {
        return std::nullopt;
    }
    return Reference{static_cast<std::uint32_t>(*number), static_cast<std::uint32_t>(*generation)};
}

bool isArray(std::string_view value) {
    return value.starts_with('[');
}

bool isDictionary(std::string_view value) {
    return value.starts_with("<<"sv);
}

std::optional<std::uint64_t> countOfReferences(std::string_view array) {
    constexpr auto end = " 0 R"sv;
    constexpr std::size_t mostDigits = 9;
    if (array.size() < 2 || !isArray(array)) {
        return std::nullopt;
    }
    std::string_view rest = array.substr(1, array.size() - 2);
    std::uint64_t count = 0;
    for (skipWhile(isBlank, rest); !rest.empty(); skipWhile(isBlank, rest)) {
        const std::size_t digits = skipWhile(isDigit, rest);
        if (digits == 0 || digits > mostDigits || !rest.starts_with(end)) {
            return std::nullopt;
        }
        rest.remove_prefix(end.size());
        if (!rest.empty() && !isBlank(rest[0])) {
            return std::nullopt;
        }
        ++count;
    }
    return count;
}

ValueReader::ValueReader(std::string_view container)
    : m_rest(container) {
    m_rest.remove_prefix(isDictionary(container) ? 2 : isArray(container) ? 1 : container.size());
}

std::optional<std::string_view> ValueReader::next() {
    return takeValue(m_rest);
}

std::optional<Dictionary> Dictionary::of(std::string_view value) {
    if (!isDictionary(value)) {
        return std::nullopt;
    }
    Dictionary dictionary;
    ValueReader reader(value);
    while (const auto key = reader.next()) {
        const auto found = reader.next();
        if (!found || !dictionary.add(*key, *found)) {
            return std::nullopt;
        }
    }
    return dictionary;
}

bool Dictionary::add(std::string_view key, std::string_view value) {
    constexpr std::size_t most = 128;
    if (!key.starts_with('/') || key.find('#') != std::string_view::npos || !(*this)[key].empty() ||
        m_entries.size() == most) {
        return false;
    }
    m_entries.push_back({key, value});
    return true;
}

std::string_view Dictionary::operator[](std::string_view key) const {
    const auto found = std::ranges::find(m_entries, key, &Entry::key);
    return found == m_entries.end() ? std::string_view() : found->value;
}

} // namespace platform::pdf
