// SPDX-License-Identifier: Apache-2.0
#include "platform/Json.h"

#include <cmath>
#include <stdexcept>

#include <nlohmann/json.hpp>

namespace platform {
namespace {

using Library = nlohmann::ordered_json;

constexpr int maximumDepth = 512;

Library converted(const Json& json, int depth);

Library convertedValue(const Json::Array& array, int depth) {
    Library result = Library::array();
    for (const Json& element : array) {
        result.push_back(converted(element, depth + 1));
    }
    return result;
}

Library convertedValue(const Json::Object& object, int depth) {
    Library result = Library::object();
    for (const auto& [key, value] : object) {
        result[key] = converted(value, depth + 1);
    }
    return result;
}

Library convertedValue(double number, int /*depth*/) {
    if (!std::isfinite(number)) {
        throw std::invalid_argument(std::isnan(number) ? "Invalid number value (NaN) in JSON write"
                                                       : "Invalid number value (infinite) in JSON "
                                                         "write");
    }
    return number;
}

template <class Scalar>
Library convertedValue(const Scalar& scalar, int /*depth*/) {
    return scalar;
}

Library converted(const Json& json, int depth) {
    if (depth > maximumDepth) {
        throw std::invalid_argument("Too many levels in JSON write");
    }
    return std::visit([depth](const auto& value) { return convertedValue(value, depth); },
                      json.value());
}

} // namespace

std::optional<std::string> Json::serialized(std::string& error) const {
    if (!std::holds_alternative<Array>(m_value) && !std::holds_alternative<Object>(m_value)) {
        error = "Invalid top-level type in JSON write";
        return std::nullopt;
    }
    try {
        constexpr int indent = 2;
        return converted(*this, 1).dump(indent, ' ', false, Library::error_handler_t::replace);
    } catch (const std::exception& failure) {
        error = failure.what();
        return std::nullopt;
    }
}

} // namespace platform
