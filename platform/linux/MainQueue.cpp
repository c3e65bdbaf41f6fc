// SPDX-License-Identifier: Apache-2.0
// A file of its own, so that a program without a main loop does not link GLib.
#include "platform/DispatchQueue.h"

#include <list>
#include <memory>
#include <mutex>
#include <new>
#include <utility>

#include <glib.h>

namespace platform::DispatchQueue {
namespace {

using Work = std::function<void()>;
/// Of nodes that need no memory when they change hands.
using WorkList = std::list<Work>;

/// The work of the main queue. GLib only wakes the servicing thread; closures change hands under
/// this mutex, so their order of memory does not rest on GLib's internals.
///
/// At most one wake source is attached at a time and each runs one piece of work. A source for
/// every piece would have one iteration of the context run all of them, with no chance for input
/// events or for the `done` of `runMainQueueUntil` in between.
class MainQueue {
public:
    void submit(WorkList& work);
    void serviceUntil(const std::function<bool()>& done) noexcept;

private:
    void attachWakeSource();
    void runFirst();
    static gboolean wake(gpointer self) noexcept;

    std::mutex m_mutex;
    WorkList m_queue;
    bool m_wakeSourceAttached = false;
    /// Held by the one thread of ours that services the context or waits to do so.
    std::mutex m_servicingTurn;
};

void MainQueue::submit(WorkList& work) {
    const std::lock_guard lock(m_mutex);
    m_queue.splice(m_queue.end(), work);
    if (!m_wakeSourceAttached) {
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
    m_wakeSourceAttached = true;
}

gboolean MainQueue::wake(gpointer self) noexcept {
    static_cast<MainQueue*>(self)->runFirst();
    return G_SOURCE_REMOVE;
}

/// Runs one piece of work. The next source is attached beforehand, because GLib does not enter a
/// source again while it runs and the work may wait in a nested main loop for later work.
void MainQueue::runFirst() {
    WorkList first;
    {
        const std::lock_guard lock(m_mutex);
        m_wakeSourceAttached = false;
        first.splice(first.end(), m_queue, m_queue.begin());
        if (!m_queue.empty()) {
            attachWakeSource();
        }
    }
    first.front()();
}

/// Threads take turns under a mutex of ours rather than wait inside GLib for one another: so each
/// asks `done` when its turn comes, instead of sleeping on although its condition was fulfilled
/// by the thread before. A thread that owns the context already is in work that waits for other
/// work, or in an application's main loop; it must not wait for anybody's turn.
void MainQueue::serviceUntil(const std::function<bool()>& done) noexcept {
    std::unique_lock turn(m_servicingTurn, std::defer_lock);
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

void asyncMain(std::function<void()> work) {
    WorkList list;
    list.push_back(std::move(work));
    mainQueue().submit(list);
}

void asyncWithReply(QualityOfService quality, std::function<void()> work,
                    std::function<void()> reply) {
    const auto list = std::make_shared<WorkList>();
    list->push_back(std::move(reply));
    async(quality, [work = std::move(work), list]() mutable {
        try {
            work();
        } catch (const std::bad_alloc&) {
            // The reply finds what the work left for it.
        }
        // What it holds goes before the reply tells that it is done.
        work = nullptr;
        mainQueue().submit(*list);
    });
}

void runMainQueueUntil(const std::function<bool()>& done) {
    mainQueue().serviceUntil(done);
}

} // namespace platform::DispatchQueue
