// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <functional>
#include <string_view>

/// The system log. Nothing that is logged ever reaches the terminal.
namespace platform::SystemLog {

/// Receives one message in place of the system log.
using Sink = std::function<void(std::string_view message)>;

/// Writes one error message (UTF-8, without line break) to the system log. Any thread.
void error(std::string_view message);

/// Sends later messages to `sink`, or to the system log again when it is empty. For tests.
/// Any thread; the sink is called on the thread that logs, one message at a time.
void setSink(Sink sink);

} // namespace platform::SystemLog
