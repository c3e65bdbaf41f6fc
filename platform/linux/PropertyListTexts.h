// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "platform/PropertyList.h"

#include <optional>
#include <string>
#include <vector>

namespace platform {

/// The elements of an array of nothing but texts; nullopt for every other value, and for none. The
/// value is an optional one, or a pointer to one.
[[nodiscard]] std::optional<std::vector<std::string>> textsIn(const auto& value) {
    const PropertyList::Array* const array = value ? value->array() : nullptr;
    if (array == nullptr) {
        return std::nullopt;
    }
    std::vector<std::string> texts;
    for (const PropertyList& element : *array) {
        if (element.string() == nullptr) {
            return std::nullopt;
        }
        texts.push_back(*element.string());
    }
    return texts;
}

} // namespace platform
