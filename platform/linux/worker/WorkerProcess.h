// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "platform/linux/Descriptor.h"
#include "platform/linux/worker/MediaMessage.h"

#include <chrono>
#include <cstdint>
#include <ctime>
#include <memory>
#include <string>
#include <vector>

namespace platform::worker {

/// How long a process may take. Waiting is looked at a few times within each of them, so each may
/// be exceeded by a part of itself.
struct TimeLimits {
    std::chrono::milliseconds starting{10'000};  ///< until it waits for the first request
    std::chrono::milliseconds processor{10'000}; ///< of processor time for one file
    std::chrono::milliseconds wall{60'000};      ///< for one file, however busy the machine is
};

/// A process that reads media, as this process sees it. It is no child of this process, so that
/// nobody waits for it, and ends with this object, or with this process. One thread at a time.
class WorkerProcess {
public:
    /// Starts `program` and waits until it is ready. Null when that fails or takes too long.
    [[nodiscard]] static std::unique_ptr<WorkerProcess> start(const std::string& program,
                                                              const TimeLimits& limits);
    WorkerProcess(const WorkerProcess&) = delete;
    WorkerProcess& operator=(const WorkerProcess&) = delete;
    WorkerProcess(WorkerProcess&&) = delete;
    WorkerProcess& operator=(WorkerProcess&&) = delete;
    ~WorkerProcess();

    struct Reply {
        enum class Kind {
            value,
            nothing,
            nonsense, ///< it does not keep to the protocol
            late,     ///< a limit is exceeded
            ended,    ///< there is no such process any more
        };
        Kind kind = Kind::nothing;
        DataView value; ///< borrowed until the next request
    };
    /// Has the file `descriptor` read; its number in the request is given here. After one of the
    /// three last answers the object is of no use any more. Blocks.
    [[nodiscard]] Reply ask(MediaRequest request, int descriptor);

    /// How many requests it was sent.
    [[nodiscard]] std::uint64_t requests() const { return m_requests; }

    /// Forgets the process without ending it: for a copy of this process, which must not keep
    /// another one's workers. Safe in a child of a process with several threads.
    void abandon();

private:
    using Clock = std::chrono::steady_clock;
    /// Until when something has to happen; the processor time counts from `used` on.
    struct Deadline {
        Clock::time_point wall;
        std::chrono::nanoseconds processor;
    };

    WorkerProcess(Descriptor socket, Descriptor lifeline, const TimeLimits& limits);
    bool becomesReady();
    [[nodiscard]] bool sendRequest(const MediaRequest& request, int descriptor) const;
    [[nodiscard]] Reply receive(const MediaRequest& request, const Deadline& deadline);
    [[nodiscard]] Reply replyTo(const MediaRequest& request, std::size_t size) const;
    [[nodiscard]] bool isOver(const Deadline& deadline) const;
    [[nodiscard]] std::chrono::nanoseconds usedProcessorTime() const;
    void wakeEvery(std::chrono::milliseconds limit) const;

    Descriptor m_socket;
    Descriptor m_lifeline;
    TimeLimits m_limits;
    clockid_t m_processorClock = -1;
    std::uint64_t m_requests = 0;
    std::vector<std::byte> m_message;
};

} // namespace platform::worker
