// SPDX-License-Identifier: Apache-2.0
#include "platform/Format.h"

#include <stdexcept>

#include <fmt/args.h>
#include <fmt/format.h>

namespace platform {

std::string formatArguments(std::string_view format, std::span<const FormatArgument> arguments) {
    fmt::dynamic_format_arg_store<fmt::format_context> store;
    for (const FormatArgument& argument : arguments) {
        std::visit([&store](const auto& value) { store.push_back(value); }, argument);
    }
    try {
        return fmt::vformat(fmt::string_view(format.data(), format.size()), store);
    } catch (const fmt::format_error& error) {
        throw std::invalid_argument(error.what());
    }
}

} // namespace platform
