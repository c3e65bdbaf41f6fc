// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <string>

/// The user's desktop.
namespace platform::Workspace {

/// Starts the application with the reverse-DNS identifier `application`, or brings it to the
/// front when it is running, and returns without waiting for it. The application belongs to no
/// terminal, writes to none, and outlives the caller. Answers whether one is installed; whether
/// it started shows only in what it does. Any thread.
bool openApplication(const std::string& application);

} // namespace platform::Workspace
