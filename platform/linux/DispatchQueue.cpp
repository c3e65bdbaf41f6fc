// SPDX-License-Identifier: Apache-2.0
#include "platform/DispatchQueue.h"

#include <chrono>
#include <condition_variable>
#include <cstddef>
#include <deque>
#include <exception>
#include <mutex>
#include <thread>
#include <utility>

#include <glib.h>

namespace platform::DispatchQueue {

namespace {

using Work = std::function<void()>;

/// Takes the oldest piece of work out of `queue`, which must not be empty.
Work takeFirst(std::deque<Work>& queue) {
    Work work = std::move(queue.front());
    queue.pop_front();
    return work;
}

/// The threads behind the global concurrent queue.
class ThreadPool {
public:
    void submit(Work work);

private:
    /// Bounds what a flood of blocking work can take from the system.
    static constexpr std::size_t maximumWorkers = 512;
    /// Long enough to carry threads from one burst of work to the next.
    static constexpr std::chrono::seconds idleTime{5};

    void startWorker();
    void abandonWorker();
    void serve() noexcept;
    void runQueued(std::unique_lock<std::mutex>& lock);

    std::mutex mutex;
    std::condition_variable workArrived;
    std::deque<Work> queue;
    /// Workers that exist or are being started.
    std::size_t workers = 0;
    /// Those of them that run no work now. One that was woken or is being started still counts,
    /// and so does the work it is going to take: comparing the two tells who is missing.
    std::size_t idleWorkers = 0;
};

void ThreadPool::submit(Work work) {
    bool needsWorker = false;
    {
        const std::lock_guard lock(mutex);
        queue.push_back(std::move(work));
        needsWorker = queue.size() > idleWorkers && workers < maximumWorkers;
        if (needsWorker) {
            ++workers;
            ++idleWorkers;
        }
    }
    if (needsWorker) {
        startWorker();
    } else {
        workArrived.notify_one();
    }
}

/// Starts the thread of a worker that is counted already.
void ThreadPool::startWorker() {
    try {
        std::thread([this] { serve(); }).detach();
    } catch (const std::exception&) {
        // Out of threads or of memory for one. The work is queued, so nothing is lost.
        abandonWorker();
    }
}

/// Makes up for a worker that is counted but has no thread. Any other worker gets to the queued
/// work in time. Without one nobody would, and whoever waits for that work would hang, so the
/// calling thread stands in. Work that it submits meanwhile finds a worker and is merely queued,
/// which keeps the stack flat.
void ThreadPool::abandonWorker() {
    std::unique_lock lock(mutex);
    if (workers == 1) {
        runQueued(lock);
    }
    --workers;
    --idleWorkers;
}

void ThreadPool::serve() noexcept {
    std::unique_lock lock(mutex);
    do {
        runQueued(lock);
    } while (workArrived.wait_for(lock, idleTime, [this] { return !queue.empty(); }));
    --workers;
    --idleWorkers;
}

/// Runs work until none is queued. `lock` is held on entry and on return, but not around work.
void ThreadPool::runQueued(std::unique_lock<std::mutex>& lock) {
    while (!queue.empty()) {
        Work work = takeFirst(queue);
        --idleWorkers;
        lock.unlock();
        work();
        // What the work owns may submit more work as it goes; that needs the lock.
        work = nullptr;
        lock.lock();
        ++idleWorkers;
    }
}

/// Never destroyed: workers may still be running while the process ends.
ThreadPool& threadPool() {
    static ThreadPool& pool = *new ThreadPool;
    return pool;
}

/// The work of the main queue. GLib only wakes the servicing thread; closures change hands under
/// this mutex, so their order of memory does not rest on GLib's internals.
///
/// At most one wake source is attached at a time and each runs one piece of work. A source for
/// every piece would have one iteration of the context run all of them, with no chance for input
/// events or for the `done` of `runMainQueueUntil` in between.
class MainQueue {
public:
    void submit(Work work);
    void serviceUntil(const std::function<bool()>& done) noexcept;

private:
    void attachWakeSource();
    void runFirst();
    static gboolean wake(gpointer self) noexcept;

    std::mutex mutex;
    std::deque<Work> queue;
    bool wakeSourceAttached = false;
    /// Held by the one thread of ours that services the context or waits to do so.
    std::mutex servicingTurn;
};

void MainQueue::submit(Work work) {
    const std::lock_guard lock(mutex);
    queue.push_back(std::move(work));
    if (!wakeSourceAttached) {
        attachWakeSource();
    }
}

/// Called with the mutex held. GLib calls back without locks of its own, so none can cross.
void MainQueue::attachWakeSource() {
    GSource* const source = g_idle_source_new();
    // Like input events: not starved by them and not ahead of them.
    g_source_set_priority(source, G_PRIORITY_DEFAULT);
    g_source_set_callback(source, &MainQueue::wake, this, nullptr);
    g_source_attach(source, nullptr);
    g_source_unref(source);
    wakeSourceAttached = true;
}

gboolean MainQueue::wake(gpointer self) noexcept {
    static_cast<MainQueue*>(self)->runFirst();
    return G_SOURCE_REMOVE;
}

/// Runs one piece of work. The next source is attached beforehand, because GLib does not enter a
/// source again while it runs and the work may wait in a nested main loop for later work.
void MainQueue::runFirst() {
    Work work;
    {
        const std::lock_guard lock(mutex);
        wakeSourceAttached = false;
        work = takeFirst(queue);
        if (!queue.empty()) {
            attachWakeSource();
        }
    }
    work();
}

/// Threads take turns under a mutex of ours rather than wait inside GLib for one another: so each
/// asks `done` when its turn comes, instead of sleeping on although its condition was fulfilled
/// by the thread before. A thread that owns the context already is in work that waits for other
/// work, or in an application's main loop; it must not wait for anybody's turn.
void MainQueue::serviceUntil(const std::function<bool()>& done) noexcept {
    std::unique_lock turn(servicingTurn, std::defer_lock);
    if (g_main_context_is_owner(nullptr) == FALSE) {
        turn.lock();
    }
    // Kept for the whole time, so that no main loop elsewhere runs some of the work. If one has
    // the context now, each iteration waits for it to stop.
    const bool owned = g_main_context_acquire(nullptr) != FALSE;
    while (!done()) {
        g_main_context_iteration(nullptr, TRUE);
    }
    if (owned) {
        g_main_context_release(nullptr);
    }
}

/// Never destroyed: workers may submit work while the process ends.
MainQueue& mainQueue() {
    static MainQueue& queue = *new MainQueue;
    return queue;
}

} // namespace

void async(QualityOfService /*quality*/, std::function<void()> work) {
    threadPool().submit(std::move(work));
}

void asyncMain(std::function<void()> work) {
    mainQueue().submit(std::move(work));
}

void runMainQueueUntil(const std::function<bool()>& done) {
    mainQueue().serviceUntil(done);
}

} // namespace platform::DispatchQueue
