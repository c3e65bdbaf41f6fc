// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <cstddef>

/// What a process that reads untrusted files gives up, for good, before it reads the first one.
namespace platform::worker {

/// How much memory the process may have mapped, programs and files included.
inline constexpr std::size_t memoryLimit = std::size_t{1024} * 1024 * 1024;

/// Whether `confine` filters system calls and limits memory. Sanitizers need more of either than
/// can be let through, so a build with them does neither; all else holds there too.
inline constexpr bool filtersSystemCalls = QM_FILTERS_SYSTEM_CALLS != 0;

/// Lets the kernel kill this process as soon as the other end of the socket `lifeline` is closed or
/// shut down, whatever the process is doing. Nothing may ever be sent through it. False when that
/// cannot be had.
[[nodiscard]] bool endWith(int lifeline);

/// Leaves this process the reading of descriptors that it has or is sent through `socket`, memory
/// that is no code, clocks, answers through `socket` and its own end: no opening, writing or
/// connecting, no new process and no signal to another. Whatever else is tried fails with EPERM.
/// Memory, sizes of written files and core dumps are limited as well. What libraries open or start
/// for themselves has to be there before. Descriptors up to the greater of the two cannot be closed
/// any more. False when the system refuses any of it; the process must not go on then.
[[nodiscard]] bool confine(int socket, int lifeline);

} // namespace platform::worker
