// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <string>

/// The user's desktop.
namespace platform::Workspace {

/// Asks for the application with the reverse-DNS identifier `application` to be started and
/// returns without waiting for it. One that this process starts itself belongs to no terminal,
/// writes to none, and outlives the caller; even one that wants a terminal gets none. What happens
/// when it is running already is up to it. Answers whether it is installed; whether it starts
/// shows only in what it does. Any thread.
bool openApplication(const std::string& application);

} // namespace platform::Workspace
