// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <functional>

/// Queues of work, in the manner of a system-wide dispatch service.
namespace platform::DispatchQueue {

/// Quality-of-service classes. They name one pool here and carry the platform's numbers.
enum class QualityOfService : unsigned {
    defaultClass = 21,
    userInitiated = 25,
};

/// Runs `work` on the global concurrent queue and returns at once. The queue starts another
/// thread whenever all of its threads are busy, so work may block, even on other work of the same
/// queue. Work that is still queued or running when the process ends is dropped. `work` must not
/// throw. May be called from any thread.
void async(QualityOfService quality, std::function<void()> work);

/// Runs `work` on the main queue and returns at once, never running it inside this call. Work
/// runs in the order in which it was submitted, on the thread that services the default main
/// context (a GTK or Qt application does so by itself; others call `runMainQueueUntil`). `work`
/// must not throw. May be called from any thread.
void asyncMain(std::function<void()> work);

/// Services the main queue on the calling thread until `done` answers true; `done` is asked
/// before the first and after every piece of work. For programs without a main loop of their own.
void runMainQueueUntil(const std::function<bool()>& done);

} // namespace platform::DispatchQueue
