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
    /// The sockets for one that is still to be started; null when there are none to be had. From
    /// here on a copy of this process has to `abandon` it.
    [[nodiscard]] static std::unique_ptr<WorkerProcess> create(const TimeLimits& limits);
    WorkerProcess(const WorkerProcess&) = delete;
    WorkerProcess& operator=(const WorkerProcess&) = delete;
    WorkerProcess(WorkerProcess&&) = delete;
    WorkerProcess& operator=(WorkerProcess&&) = delete;
    ~WorkerProcess();

    /// Starts `program`, which gets the other ends of the sockets.
    void start(const std::string& program);
    /// Leaves these ends to the process alone, so that this side learns of its end. No copy of this
    /// process may be made meanwhile.
    void releaseOtherEnds();
    /// Waits until the process is ready. False when it fails to be or takes too long; the object is
    /// of no use then.
    [[nodiscard]] bool becomesReady();

    struct Reply {
        enum class Kind {
            value,
            nothing,
            nonsense, ///< it does not keep to the protocol
            late,     ///< a limit is exceeded
            ended,    ///< there is no such process any more
            notSent,  ///< the file did not get to it
        };
        Kind kind = Kind::nothing;
        DataView value; ///< borrowed until the next request
    };
    /// Has the file `descriptor` read; its number in the request is given here. After one of the
    /// four last answers the object is of no use any more. Blocks.
    [[nodiscard]] Reply ask(MediaRequest request, int descriptor);

    /// How many requests it was sent.
    [[nodiscard]] std::uint64_t requests() const { return m_requestCount; }

    /// Forgets the process without ending it: for a copy of this process, which must not keep
    /// another one's workers. Safe in a child of a process with several threads.
    void abandon();

private:
    using Clock = std::chrono::steady_clock;
    /// Until when something has to happen; the processor time by the clock of the process.
    struct Deadline {
        Clock::time_point wall;
        std::chrono::nanoseconds processor;
    };

    /// Two connected sockets, one of them for the process.
    struct SocketPair {
        Descriptor own;
        Descriptor other;
    };

    WorkerProcess(SocketPair requests, SocketPair lifeline, const TimeLimits& limits);
    [[nodiscard]] static SocketPair socketPair();
    [[nodiscard]] int socket() const { return m_requests.own.number(); }
    [[nodiscard]] bool sendRequest(const MediaRequest& request, int descriptor) const;
    [[nodiscard]] Reply receive(const MediaRequest& request, const Deadline& deadline);
    [[nodiscard]] Reply replyTo(const MediaRequest& request, std::size_t size) const;
    [[nodiscard]] bool isOver(const Deadline& deadline) const;
    [[nodiscard]] std::chrono::nanoseconds usedProcessorTime() const;
    void wakeEvery(std::chrono::milliseconds limit) const;

    SocketPair m_requests;
    SocketPair m_lifeline;
    TimeLimits m_limits;
    clockid_t m_processorClock = -1;
    std::uint64_t m_requestCount = 0;
    std::vector<std::byte> m_message;
};

} // namespace platform::worker
