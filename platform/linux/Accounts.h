// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <cstdint>
#include <optional>
#include <string>

/// Home directories from the account database, for this folder's own use: nullopt for unknown
/// users. Any thread.
namespace platform {

[[nodiscard]] std::optional<std::string> homeOfUser(std::uint32_t userID);
[[nodiscard]] std::optional<std::string> homeOfUser(const std::string& userName);

} // namespace platform
