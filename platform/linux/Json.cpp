// SPDX-License-Identifier: Apache-2.0
#include "platform/Json.h"

#include "platform/VariantCopy.h"

#include <algorithm>
#include <cmath>
#include <stdexcept>
#include <utility>

#include <nlohmann/json.hpp>

namespace platform {
namespace {

using Library = nlohmann::ordered_json;

constexpr int maximumDepth = 512;

// What holds others is laid out here: the library's containers ask for memory when they are
// destroyed, and end the program where there is none.
class Writer {
public:
    explicit Writer(int levels)
        : m_text(indent * static_cast<std::size_t>(levels), ' ')
        , m_depth(levels + 1) {}

    std::string take() { return std::move(m_text); }

    void write(const Json& json) {
        if (m_depth > maximumDepth) {
            throw std::invalid_argument("Too many levels in JSON write");
        }
        std::visit([this](const auto& value) { writeValue(value); }, json.value());
    }

private:
    void writeValue(const Json::Array& array) {
        begin('[');
        for (const Json& element : array) {
            beginElement();
            write(element);
        }
        end(']', array.empty());
    }

    // Of members with the same key, the last one counts, in the place of the first.
    void writeValue(const Json::Object& object) {
        begin('{');
        for (auto member = object.begin(); member != object.end(); ++member) {
            const auto isSame = [&key = member->first](const auto& other) {
                return other.first == key;
            };
            if (std::none_of(object.begin(), member, isSame)) {
                beginElement();
                writeValue(member->first);
                m_text.append(": ");
                write(std::find_if(object.rbegin(), object.rend(), isSame)->second);
            }
        }
        end('}', object.empty());
    }

    void writeValue(double number) {
        if (!std::isfinite(number)) {
            throw std::invalid_argument(std::isnan(number)
                                            ? "Invalid number value (NaN) in JSON write"
                                            : "Invalid number value (infinite) in JSON write");
        }
        m_text.append(Library(number).dump());
    }

    template <class Scalar>
    void writeValue(const Scalar& scalar) {
        m_text.append(Library(scalar).dump(-1, ' ', false, Library::error_handler_t::replace));
    }

    void begin(char bracket) {
        m_text.push_back(bracket);
        ++m_depth;
        m_isFirst = true;
    }

    void beginElement() {
        m_text.append(m_isFirst ? "" : ",");
        m_isFirst = false;
        beginLine();
    }

    void end(char bracket, bool isEmpty) {
        --m_depth;
        if (!isEmpty) {
            beginLine();
        }
        m_text.push_back(bracket);
        m_isFirst = false;
    }

    void beginLine() {
        m_text.push_back('\n');
        m_text.append(indent * static_cast<std::size_t>(m_depth - 1), ' ');
    }

    static constexpr std::size_t indent = 2;
    std::string m_text;
    int m_depth;
    bool m_isFirst = true; // in what holds the next value
};

} // namespace

Json::Json(const Json& other)
    : m_value(copyOf(other.m_value)) {}

Json& Json::operator=(const Json& other) {
    return *this = Json(other);
}

std::optional<std::string> Json::serialized(std::string& error) const {
    if (!std::holds_alternative<Array>(m_value) && !std::holds_alternative<Object>(m_value)) {
        error = "Invalid top-level type in JSON write";
        return std::nullopt;
    }
    return serialized(0, error);
}

std::optional<std::string> Json::serializedAsElement(std::string& error) const {
    return serialized(1, error);
}

std::optional<std::string> Json::serialized(int levels, std::string& error) const {
    try {
        Writer writer(levels);
        writer.write(*this);
        return writer.take();
    } catch (const std::invalid_argument& failure) {
        error = failure.what();
        return std::nullopt;
    }
}

} // namespace platform
