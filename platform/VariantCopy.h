// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <type_traits>
#include <utility>
#include <variant>

namespace platform {

/// A copy of `source`, whose alternatives are of different types. Throws what copying the value
/// throws, such as std::bad_alloc, and nothing else happens then. A variant's own constructor does
/// not keep to that in gcc's library: where all alternatives are scalars, texts and containers, it
/// destroys a value that it has not made (seen in version 12).
template <class... Types>
[[nodiscard]] std::variant<Types...> copyOf(const std::variant<Types...>& source) {
    return std::visit(
        [](const auto& value) {
            using Type = std::remove_cvref_t<decltype(value)>;
            return std::variant<Types...>(std::in_place_type<Type>, value);
        },
        source);
}

} // namespace platform
