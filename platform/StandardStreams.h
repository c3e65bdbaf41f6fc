// SPDX-License-Identifier: Apache-2.0
#pragma once

/// The three streams that a process is started with.
namespace platform::StandardStreams {

/// Whether standard output is a terminal, asked afresh on every call. Any thread.
[[nodiscard]] bool outputIsTerminal();

/// Occupies those of the three descriptors that the process was started without, so that no file
/// opened later takes their place and gets what is meant for a stream. Reading or writing them
/// goes on failing. Call once, before anything is opened.
void reserveClosedStreams();

} // namespace platform::StandardStreams
