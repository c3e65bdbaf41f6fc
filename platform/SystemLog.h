// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "platform/Export.h"

#include <functional>
#include <string_view>

/// The system log. Nothing that is logged ever reaches the terminal.
namespace platform::SystemLog {

/// Receives one message in place of the system log.
using Sink = std::function<void(std::string_view message)>;

/// Writes one error message (UTF-8) to the system log. Control characters and line separators,
/// as they may come from file names, are replaced by blanks, so that one message is one line.
/// Failures to log are ignored. Any thread.
QM_EXPORT void error(std::string_view message);

/// Sends later messages to `sink`, or to the system log again when it is empty. For tests.
/// Any thread; the sink is called on the thread that logs, one message at a time, with the text
/// that the system log would get. Once this returns, the previous sink is not running and will
/// not run again, except when this is called from inside that sink.
///
/// What a sink logs itself goes to the system log. A sink must not wait for another thread that
/// logs or sets a sink.
QM_EXPORT void setSink(Sink sink);

} // namespace platform::SystemLog
