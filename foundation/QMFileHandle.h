// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "platform/Data.h"
#include "platform/Export.h"
#include "platform/FileHandle.h"

#include <cstddef>
#include <optional>
#include <span>

/// Helpers that read from file handles. A failed read, or memory that runs out, writes one line
/// to the system log, nothing to the terminal, and answers nullopt. One thread at a time per
/// handle.

/// All bytes from the current position to the end of the file; empty at the end.
QM_EXPORT [[nodiscard]] std::optional<platform::Data>
qm_readDataToEndOfFile(platform::FileHandle& file);

/// Up to `length` bytes from the current position: fewer only at the end of the file or before a
/// failure, which the next call reports; empty at the end. Memory grows with what is read, not
/// with `length`.
QM_EXPORT [[nodiscard]] std::optional<platform::Data>
qm_readDataUpToLength(platform::FileHandle& file, std::size_t length);

/// The same into memory of the caller, for loops that use one buffer again and again. Answers how
/// many bytes of `buffer` were filled.
QM_EXPORT [[nodiscard]] std::optional<std::size_t>
qm_readDataUpToLength(platform::FileHandle& file, std::span<std::byte> buffer);
