// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <cstddef>
#include <optional>
#include <string_view>

namespace platform {

/// How many words a text in UTF-8 has by ICU's rules for no language in particular, dictionaries
/// included. nullopt when memory runs out and for texts of more than 2 GiB.
[[nodiscard]] std::optional<std::size_t> wordCountByRules(std::string_view text);

} // namespace platform
