// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "platform/DispatchQueue.h"

#include <chrono>
#include <functional>
#include <memory>
#include <utility>

namespace platform {

/// Work that runs once on a global queue after a time, unless it is cancelled before. The timer
/// may be copied; all copies are the same timer. Any thread.
class DispatchTimer {
public:
    /// Starts the timer. `work` runs `delay` from now, no earlier; if nothing cancels it, also
    /// when no copy of the timer is left. The timer takes up a thread of the queue until then,
    /// which is had and fails as `DispatchQueue::async` says.
    [[nodiscard]] static DispatchTimer after(std::chrono::nanoseconds delay,
                                             DispatchQueue::QualityOfService quality,
                                             std::function<void()> work);

    /// Keeps the work from starting, and frees what it holds. Does not wait for work that has
    /// started; harmless then and when cancelled already, and allowed from inside the work.
    void cancel() const;

private:
    struct State;
    explicit DispatchTimer(std::shared_ptr<State> state)
        : m_state(std::move(state)) {}
    std::shared_ptr<State> m_state;
};

} // namespace platform
