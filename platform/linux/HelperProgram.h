// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <string>

namespace platform {

/// The path of the program `name`, which is installed with this library and not meant for people:
/// beside this process's own program, as in a build tree, or else in the folder of such programs,
/// whether it is there or not. Any thread.
[[nodiscard]] std::string helperProgram(const std::string& name);

} // namespace platform
