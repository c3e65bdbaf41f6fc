// SPDX-License-Identifier: Apache-2.0
#include "platform/DispatchTimer.h"

#include <condition_variable>
#include <mutex>
#include <utility>

namespace platform {

struct DispatchTimer::State {
    std::mutex mutex;
    std::condition_variable cancelled;
    bool isCancelled = false;
};

// A thread of the pool waits for the time: the queue starts another whenever all are busy, and
// timers here are few.
DispatchTimer DispatchTimer::after(std::chrono::nanoseconds delay,
                                   DispatchQueue::QualityOfService quality,
                                   std::function<void()> work) {
    auto state = std::make_shared<State>();
    const auto end = std::chrono::steady_clock::now() + delay;
    DispatchQueue::async(quality, [state, end, work = std::move(work)] {
        std::unique_lock lock(state->mutex);
        const auto isCancelled = [&state] { return state->isCancelled; };
        if (!state->cancelled.wait_until(lock, end, isCancelled)) {
            lock.unlock();
            work();
        }
    });
    return DispatchTimer(std::move(state));
}

void DispatchTimer::cancel() const {
    {
        const std::lock_guard lock(m_state->mutex);
        m_state->isCancelled = true;
    }
    m_state->cancelled.notify_all();
}

} // namespace platform
