// SPDX-License-Identifier: Apache-2.0
#include "platform/linux/Cbor.h"

#include "platform/linux/ByteOrder.h"
#include "platform/linux/Utf8.h"

#include <bit>
#include <limits>
#include <string>
#include <string_view>
#include <utility>
#include <variant>

namespace platform::Cbor {
namespace {

// RFC 8949, section 3: the upper three bits of the first byte are the type, the lower five a small
// argument or how many bytes of it follow.
enum class Major : unsigned { positive, negative, bytes, text, array, map, tag, simple };

constexpr unsigned argumentBits = 5;
constexpr unsigned argumentMask = 31;
constexpr unsigned bitsPerByte = 8;
constexpr unsigned firstLongArgument = 24; // then 1, 2, 4 or 8 bytes
constexpr unsigned lastLongArgument = 27;
constexpr unsigned simpleFalse = 20;
constexpr unsigned simpleTrue = 21;
constexpr unsigned simpleNull = 22;
constexpr unsigned doubleNumber = 27;

// How an integer below zero is written: the distance from -1.
constexpr std::uint64_t belowMinusOne(std::int64_t number) {
    return ~static_cast<std::uint64_t>(number);
}

// How many bytes of the argument follow the first byte.
constexpr unsigned bytesOfArgument(unsigned information) {
    return 1U << (information - firstLongArgument);
}

// What the first byte says of an argument in the shortest form of it.
constexpr unsigned informationOf(std::uint64_t argument) {
    if (argument < firstLongArgument) {
        return static_cast<unsigned>(argument);
    }
    unsigned step = 0;
    while (step < 3 && (argument >> (bitsPerByte << step)) != 0) {
        ++step;
    }
    return firstLongArgument + step;
}

class Writer {
public:
    // Answers false beyond the limit of levels.
    bool write(const Json& value, int depth) {
        return std::visit([&](const auto& content) { return put(content, depth); }, value.value());
    }
    Data bytes;

private:
    void byte(std::uint64_t value) { bytes.push_back(static_cast<std::byte>(value)); }

    void head(Major major, std::uint64_t argument) {
        const std::uint64_t type = static_cast<unsigned>(major) << argumentBits;
        const unsigned information = informationOf(argument);
        byte(type | information);
        if (information >= firstLongArgument) {
            appendBigEndian(bytes, argument, bytesOfArgument(information));
        }
    }

    void text(std::string_view content) {
        head(Major::text, content.size());
        const DataView view = bytesOf(content);
        bytes.insert(bytes.end(), view.begin(), view.end());
    }

    bool put(std::nullptr_t, int /*depth*/) {
        head(Major::simple, simpleNull);
        return true;
    }
    bool put(bool value, int /*depth*/) {
        head(Major::simple, value ? simpleTrue : simpleFalse);
        return true;
    }
    bool put(std::uint64_t number, int /*depth*/) {
        head(Major::positive, number);
        return true;
    }
    bool put(std::int64_t number, int /*depth*/) {
        if (number < 0) {
            head(Major::negative, belowMinusOne(number));
        } else {
            head(Major::positive, static_cast<std::uint64_t>(number));
        }
        return true;
    }
    bool put(double number, int /*depth*/) {
        byte((static_cast<unsigned>(Major::simple) << argumentBits) | doubleNumber);
        appendBigEndian(bytes, std::bit_cast<std::uint64_t>(number), sizeof number);
        return true;
    }
    bool put(const std::string& content, int /*depth*/) {
        text(content);
        return true;
    }
    bool put(const Json::Array& array, int depth) {
        if (depth >= maximumDepth) {
            return false;
        }
        head(Major::array, array.size());
        for (const Json& element : array) {
            if (!write(element, depth + 1)) {
                return false;
            }
        }
        return true;
    }
    bool put(const Json::Object& object, int depth) {
        if (depth >= maximumDepth) {
            return false;
        }
        head(Major::map, object.size());
        for (const auto& [name, value] : object) {
            text(name);
            if (!write(value, depth + 1)) {
                return false;
            }
        }
        return true;
    }
};

/// What comes before the content of a value.
struct Head {
    Major major = Major::positive;
    unsigned information = 0;
    std::uint64_t argument = 0;
};

class Reader {
public:
    explicit Reader(DataView bytes)
        : m_rest(bytes) {}

    [[nodiscard]] bool atEnd() const { return m_rest.empty(); }

    std::optional<Json> read(int depth) {
        const auto start = head();
        if (!start) {
            return std::nullopt;
        }
        switch (start->major) {
        case Major::positive: return positive(start->argument);
        case Major::negative: return negative(start->argument);
        case Major::text: return textValue(start->argument);
        case Major::array: return array(start->argument, depth);
        case Major::map: return map(start->argument, depth);
        case Major::simple: return simple(*start);
        case Major::bytes:
        case Major::tag: break;
        }
        return std::nullopt;
    }

private:
    std::optional<Head> head() {
        if (m_rest.empty()) {
            return std::nullopt;
        }
        const auto first = std::to_integer<unsigned>(m_rest.front());
        m_rest = m_rest.subspan(1);
        Head result{static_cast<Major>(first >> argumentBits), first & argumentMask, 0};
        if (result.information > lastLongArgument) {
            return std::nullopt;
        }
        result.argument = result.information;
        if (result.information >= firstLongArgument) {
            const auto argument = number(bytesOfArgument(result.information));
            // The bits of a number that is no integer are not to be made shorter.
            if (!argument ||
                (result.major != Major::simple && result.information != informationOf(*argument))) {
                return std::nullopt;
            }
            result.argument = *argument;
        }
        return result;
    }

    std::optional<std::uint64_t> number(std::size_t count) {
        if (count > m_rest.size()) {
            return std::nullopt;
        }
        const std::uint64_t value = bigEndian(m_rest.first(count));
        m_rest = m_rest.subspan(count);
        return value;
    }

    static Json positive(std::uint64_t number) {
        if (number <= static_cast<std::uint64_t>(std::numeric_limits<std::int64_t>::max())) {
            return static_cast<std::int64_t>(number);
        }
        return number;
    }

    static std::optional<Json> negative(std::uint64_t distance) {
        if (distance > static_cast<std::uint64_t>(std::numeric_limits<std::int64_t>::max())) {
            return std::nullopt;
        }
        return Json(static_cast<std::int64_t>(~distance));
    }

    static std::optional<Json> simple(const Head& start) {
        switch (start.information) {
        case simpleFalse: return Json(false);
        case simpleTrue: return Json(true);
        case simpleNull: return Json(nullptr);
        case doubleNumber: return Json(std::bit_cast<double>(start.argument));
        default: return std::nullopt;
        }
    }

    std::optional<std::string> text(std::uint64_t length) {
        if (length > m_rest.size()) {
            return std::nullopt;
        }
        const DataView content = m_rest.first(static_cast<std::size_t>(length));
        m_rest = m_rest.subspan(content.size());
        const std::string_view result = charactersOf(content);
        return isUTF8(result) ? std::optional<std::string>(result) : std::nullopt;
    }

    std::optional<Json> textValue(std::uint64_t length) {
        auto content = text(length);
        return content ? std::optional<Json>(*std::move(content)) : std::nullopt;
    }

    // Counts need no check: each element takes a byte at least, and room is made as they come.
    std::optional<Json> array(std::uint64_t count, int depth) {
        if (depth >= maximumDepth) {
            return std::nullopt;
        }
        Json::Array result;
        for (; count > 0; --count) {
            auto element = read(depth + 1);
            if (!element) {
                return std::nullopt;
            }
            result.push_back(*std::move(element));
        }
        return Json(std::move(result));
    }

    std::optional<Json> map(std::uint64_t count, int depth) {
        if (depth >= maximumDepth) {
            return std::nullopt;
        }
        Json::Object result;
        for (; count > 0; --count) {
            const auto start = head();
            auto name = start && start->major == Major::text ? text(start->argument) : std::nullopt;
            auto value = name ? read(depth + 1) : std::nullopt;
            if (!value) {
                return std::nullopt;
            }
            result.emplace_back(*std::move(name), *std::move(value));
        }
        return Json(std::move(result));
    }

    DataView m_rest;
};

} // namespace

std::optional<Data> encoded(const Json& value) {
    Writer writer;
    return writer.write(value, 0) ? std::optional(std::move(writer.bytes)) : std::nullopt;
}

std::optional<Json> decoded(DataView bytes) {
    Reader reader(bytes);
    auto value = reader.read(0);
    return value && reader.atEnd() ? std::move(value) : std::nullopt;
}

} // namespace platform::Cbor
