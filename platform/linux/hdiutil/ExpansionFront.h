// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "platform/linux/hdiutil/Udif.h"

#include <cstddef>
#include <cstdint>
#include <functional>
#include <mutex>
#include <optional>
#include <vector>

namespace platform::hdiutil {

/// What was written of a disk before, and who hears of what is written now.
struct ExpansionStart {
    /// So many bytes from the disk's start on are there already.
    std::uint64_t written = 0;
    /// Gets that number whenever it has grown: on any thread, never on two at once. It has to be
    /// quick, and may be empty.
    std::function<void(std::uint64_t)> onWritten;
};

/// Hands out chunks to the threads that write them, in order, and knows up to which byte the disk
/// is written without a gap. Any thread.
class ExpansionFront {
public:
    /// `chunks`, as those of a `UdifImage`, and the disk of `diskSize` bytes outlive the object.
    /// Workers are numbered from 0.
    ExpansionFront(const std::vector<UdifChunk>& chunks, std::uint64_t diskSize,
                   std::size_t workers, const ExpansionStart& start);

    /// The next chunk for a worker that has written the one before; nullptr when none is left.
    [[nodiscard]] const UdifChunk* next(std::size_t worker);

    /// The worker has written its chunk up to that byte of the disk.
    void reached(std::size_t worker, std::uint64_t byte);

private:
    [[nodiscard]] std::uint64_t startOf(std::size_t index) const;
    void tell();

    const std::vector<UdifChunk>& m_chunks;
    std::uint64_t m_diskSize;
    std::function<void(std::uint64_t)> m_onWritten;
    std::mutex m_mutex;
    std::size_t m_next;
    // What each worker has not yet written begins there.
    std::vector<std::uint64_t> m_positions;
    std::uint64_t m_told;
};

} // namespace platform::hdiutil
