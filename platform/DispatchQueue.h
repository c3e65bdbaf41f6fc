// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "platform/Export.h"

#include <functional>

/// Queues of work, in the manner of a system-wide dispatch service.
///
/// Every piece of work happens after all that its submitter did before submitting it, so what it
/// captures needs no lock of its own. Work must be callable (not an empty function) and must not
/// throw; an exception that leaves it ends the process. It is destroyed where it ran.
namespace platform::DispatchQueue {

/// Quality-of-service classes. They name one pool here and carry the platform's numbers.
enum class QualityOfService : unsigned {
    defaultClass = 21,
    userInitiated = 25,
};

/// Runs `work` on the global concurrent queue and returns at once. The queue starts another
/// thread whenever all of its threads are busy, up to some hundreds, so work may block, even on
/// other work of the same queue. Work that is still queued or running when the process ends is
/// dropped. May be called from any thread.
///
/// When the system refuses another thread, the work waits for one of the queue's threads; when
/// it has none at all, the calling thread does the work itself before this call returns. Do not
/// hold a lock that the work needs. Throws std::bad_alloc when there is no memory to queue the
/// work, which does not run then.
QM_EXPORT void async(QualityOfService quality, std::function<void()> work);

/// Runs `work` on the main queue and returns at once, never running it inside this call. Work
/// runs one piece at a time in the order in which it was submitted, on the thread that services
/// the default main context (a GTK or Qt application does so by itself; others call
/// `runMainQueueUntil`). Work that services the context itself lets the next piece start before
/// it ends. May be called from any thread. Throws std::bad_alloc when there is no memory to queue
/// the work, which does not run then.
QM_EXPORT void asyncMain(std::function<void()> work);

/// Runs `work` like `async` and then `reply` like `asyncMain`, also when `work` runs out of memory,
/// the one exception that may leave it: so whoever waits for `reply` gets it in any case. All that
/// this takes is had before it returns; throws std::bad_alloc when it is not to be had, and then
/// neither runs.
QM_EXPORT void asyncWithReply(QualityOfService quality, std::function<void()> work,
                              std::function<void()> reply);

/// Services the main queue on the calling thread until `done` answers true; `done` is asked
/// before the first and after every piece of work, and now and then in between. For programs
/// without a main loop of their own. What `done` looks at should change on the main queue: a
/// change elsewhere may go unnoticed until the next piece of work. `done` must not throw. While
/// another thread services the main queue, waits until that one stops.
QM_EXPORT void runMainQueueUntil(const std::function<bool()>& done);

} // namespace platform::DispatchQueue
