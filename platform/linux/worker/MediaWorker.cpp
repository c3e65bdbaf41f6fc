// SPDX-License-Identifier: Apache-2.0
#include "platform/linux/worker/MediaWorker.h"

#include "platform/linux/HelperProgram.h"

#include <algorithm>
#include <condition_variable>
#include <mutex>
#include <thread>
#include <utility>
#include <vector>

#include <pthread.h>
#include <unistd.h>

namespace platform::worker {

struct MediaWorker::State {
    std::mutex mutex;
    std::condition_variable changed;
    std::vector<Process> idle;
    std::vector<WorkerProcess*> all; ///< also those that a thread has taken
    unsigned count = 0;              ///< of these, and of those that are being started
    std::chrono::steady_clock::time_point noStartBefore;
    State* inherited = nullptr; ///< of the process that this one is a copy of

    // The process must be out of the list before its descriptors become those of something else.
    void drop(Process process) {
        std::erase(all, process.get());
        process.reset();
    }
};

/// Keeps copies of this process away from its workers. Two that asked the same one would get each
/// other's answers, and a copy that lived on would keep workers from ending with this process.
class MediaWorker::Registry {
public:
    static void add(MediaWorker& worker) {
        [[maybe_unused]] static const int once =
            ::pthread_atfork([] { instance().prepare(); }, [] { instance().inParent(); },
                             [] { instance().inChild(); });
        const std::lock_guard lock(instance().m_mutex);
        instance().m_workers.push_back(&worker);
    }
    static void remove(MediaWorker& worker) {
        const std::lock_guard lock(instance().m_mutex);
        std::erase(instance().m_workers, &worker);
    }

private:
    // Never destroyed: threads may outlive the end of main.
    static Registry& instance() {
        static auto* const registry = new Registry;
        return *registry;
    }

    void prepare() {
        m_mutex.lock();
        for (MediaWorker* worker : m_workers) {
            worker->m_state->mutex.lock();
        }
    }
    void inParent() {
        for (MediaWorker* worker : m_workers) {
            worker->m_state->mutex.unlock();
        }
        m_mutex.unlock();
    }
    // The threads that have taken or wait for something are not here, so the old state is left as
    // it is, and never destroyed.
    void inChild() {
        for (MediaWorker* worker : m_workers) {
            for (WorkerProcess* process : worker->m_state->all) {
                process->abandon();
            }
            auto state = std::make_unique<State>();
            worker->m_state->mutex.unlock();
            state->inherited = worker->m_state.release();
            worker->m_state = std::move(state);
        }
        m_mutex.unlock();
    }

    std::mutex m_mutex;
    std::vector<MediaWorker*> m_workers;
};

MediaWorker::MediaWorker(Settings settings)
    : m_settings(std::move(settings))
    , m_state(std::make_unique<State>()) {
    Registry::add(*this);
}

MediaWorker::~MediaWorker() {
    Registry::remove(*this);
}

namespace {

MediaWorker::Settings settingsFor(const std::string& program) {
    // More than there are cores: while one answer is on its way, another file is read.
    constexpr unsigned processesPerCore = 2;
    constexpr unsigned mostProcesses = 8;
    MediaWorker::Settings settings;
    settings.program = helperProgram(program);
    settings.limits.wall = std::chrono::seconds(QM_MEDIA_TIME_LIMIT);
    settings.processes =
        std::clamp(processesPerCore * std::thread::hardware_concurrency(), 1U, mostProcesses);
    return settings;
}

} // namespace

// A program for each kind, as the libraries of some take long to load. Never destroyed: threads may
// outlive the end of main.
MediaWorker& MediaWorker::shared(MediaKind kind) {
    switch (kind) {
    case MediaKind::mediaAsset: {
        static auto& worker = *new MediaWorker(settingsFor("quillmere-media-worker-av"));
        return worker;
    }
    case MediaKind::pdfDocument: {
        static auto& worker = *new MediaWorker(settingsFor("quillmere-media-worker-pdf"));
        return worker;
    }
    case MediaKind::imageProperties: break;
    }
    static auto& worker = *new MediaWorker(settingsFor("quillmere-media-worker"));
    return worker;
}

bool MediaWorker::ask(const MediaRequest& request, int descriptor, const Reader& reader) {
    using Kind = WorkerProcess::Reply::Kind;
    Process process = take();
    if (!process) {
        return false;
    }
    const bool isNew = process->requests() == 0;
    WorkerProcess::Reply reply = process->ask(request, descriptor);
    if (reply.kind == Kind::ended && !isNew) {
        process = replacementFor(std::move(process));
        if (!process) {
            return false;
        }
        reply = process->ask(request, descriptor);
    }
    const bool isAnswered = reply.kind == Kind::value && reader(reply.value);
    const bool isSound = isAnswered || reply.kind == Kind::nothing;
    if (isSound && process->requests() < m_settings.requestsPerProcess) {
        giveBack(std::move(process));
    } else {
        discard(std::move(process));
    }
    return isAnswered;
}

// The one that was idle for the shortest time, which is the one that caches know best.
MediaWorker::Process MediaWorker::take() {
    State& state = *m_state;
    std::unique_lock lock(state.mutex);
    state.changed.wait(lock,
                       [&] { return !state.idle.empty() || state.count < m_settings.processes; });
    if (!state.idle.empty()) {
        Process process = std::move(state.idle.back());
        state.idle.pop_back();
        return process;
    }
    if (!mayStart()) {
        return nullptr;
    }
    ++state.count;
    lock.unlock();
    return started();
}

bool MediaWorker::mayStart() const {
    return std::chrono::steady_clock::now() >= m_state->noStartBefore &&
           ::access(m_settings.program.c_str(), X_OK) == 0;
}

// The new process is counted already.
MediaWorker::Process MediaWorker::started() {
    Process process = WorkerProcess::start(m_settings.program, m_settings.limits);
    const std::lock_guard lock(m_state->mutex);
    if (process) {
        m_state->all.push_back(process.get());
    } else {
        m_state->noStartBefore = std::chrono::steady_clock::now() + m_settings.pause;
        --m_state->count;
        m_state->changed.notify_one();
    }
    return process;
}

MediaWorker::Process MediaWorker::replacementFor(Process process) {
    {
        const std::lock_guard lock(m_state->mutex);
        m_state->drop(std::move(process));
    }
    return started();
}

void MediaWorker::giveBack(Process process) {
    {
        const std::lock_guard lock(m_state->mutex);
        m_state->idle.push_back(std::move(process));
    }
    m_state->changed.notify_one();
}

void MediaWorker::discard(Process process) {
    {
        const std::lock_guard lock(m_state->mutex);
        m_state->drop(std::move(process));
        --m_state->count;
    }
    m_state->changed.notify_one();
}

} // namespace platform::worker
