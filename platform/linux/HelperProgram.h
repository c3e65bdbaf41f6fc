// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <string>

namespace platform {

/// The path of the program `name`, which is installed with this library and not meant for people:
/// beside this process's own program, as in a build tree; or where it was installed, seen from the
/// program or the shared library that holds this code, so that an installation may be moved as a
/// whole; or else in the folder that was chosen when this was built, whether it is there or not.
/// The first two only where root owns it, or who owns that program or library. Any thread.
[[nodiscard]] std::string helperProgram(const std::string& name);

} // namespace platform
