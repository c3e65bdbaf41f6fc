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

    std::mutex m_mutex;
    std::condition_variable m_workArrived;
    std::deque<Work> m_queue;
    /// Workers that exist or are being started.
    std::size_t m_workers = 0;
    /// Those of them that run no work now. One that was woken or is being started still counts,
    /// and so does the work it is going to take: comparing the two tells who is missing.
    std::size_t m_idleWorkers = 0;
};

void ThreadPool::submit(Work work) {
    bool needsWorker = false;
    {
        const std::lock_guard lock(m_mutex);
        m_queue.push_back(std::move(work));
        needsWorker = m_queue.size() > m_idleWorkers && m_workers < maximumWorkers;
        if (needsWorker) {
            ++m_workers;
            ++m_idleWorkers;
        }
    }
    if (needsWorker) {
        startWorker();
    } else {
        m_workArrived.notify_one();
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
    std::unique_lock lock(m_mutex);
    if (m_workers == 1) {
        runQueued(lock);
    }
    --m_workers;
    --m_idleWorkers;
}

void ThreadPool::serve() noexcept {
    std::unique_lock lock(m_mutex);
    do {
        runQueued(lock);
    } while (m_workArrived.wait_for(lock, idleTime, [this] { return !m_queue.empty(); }));
    --m_workers;
    --m_idleWorkers;
}

/// Runs work until none is queued. `lock` is held on entry and on return, but not around work.
void ThreadPool::runQueued(std::unique_lock<std::mutex>& lock) {
    while (!m_queue.empty()) {
        Work work = takeFirst(m_queue);
        --m_idleWorkers;
        lock.unlock();
        work();
        // What the work owns may submit more work as it goes; that needs the lock.
        work = nullptr;
        lock.lock();
        ++m_idleWorkers;
    }
}

/// Never destroyed: workers may still be running while the process ends.
ThreadPool& threadPool() {
    static ThreadPool& pool = *new ThreadPool;
    return pool;
}

} // namespace

void async(QualityOfService /*quality*/, std::function<void()> work) {
    threadPool().submit(std::move(work));
}

} // namespace platform::DispatchQueue
