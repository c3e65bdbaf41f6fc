// SPDX-License-Identifier: Apache-2.0
#include "platform/linux/worker/MediaWorker.h"

#include "platform/linux/HelperProgram.h"

#include <algorithm>
#include <condition_variable>
#include <mutex>
#include <new>
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
            state->idle.reserve(worker->m_settings.processes);
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
    m_state->idle.reserve(m_settings.processes);
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

/// A process while it is asked. Unless it is given back, it is discarded, whatever is thrown.
class MediaWorker::Lease {
public:
    explicit Lease(MediaWorker& worker)
        : process(worker.take())
        , m_worker(worker) {}
    Lease(const Lease&) = delete;
    Lease& operator=(const Lease&) = delete;
    Lease(Lease&&) = delete;
    Lease& operator=(Lease&&) = delete;
    ~Lease() {
        if (process) {
            m_worker.discard(std::move(process));
        }
    }

    Process process; ///< null when there is none

private:
    MediaWorker& m_worker;
};

MediaWorker::Outcome MediaWorker::ask(const MediaRequest& request, int descriptor,
                                      const Reader& reader) {
    using Kind = WorkerProcess::Reply::Kind;
    Lease lease(*this);
    if (!lease.process) {
        return Outcome::failed;
    }
    const auto outcome = [&] {
        const auto reply = lease.process->ask(request, descriptor);
        return reply.kind == Kind::value && !reader(reply.value) ? Kind::nonsense : reply.kind;
    };
    const bool isNew = lease.process->requests() == 0;
    Kind kind = outcome();
    const bool isBlameless =
        kind == Kind::notSent || (!isNew && (kind == Kind::ended || kind == Kind::nonsense));
    if (isBlameless) {
        lease.process = replacementFor(std::move(lease.process));
        kind = lease.process ? outcome() : Kind::ended;
    }
    const bool isSound = kind == Kind::value || kind == Kind::nothing;
    if (isSound && lease.process->requests() < m_settings.requestsPerProcess) {
        giveBack(std::move(lease.process));
    }
    if (!isSound) {
        return Outcome::failed;
    }
    return kind == Kind::value ? Outcome::value : Outcome::nothing;
}

// The one that was idle for the shortest time, which is the one that caches know best. Where none
// can be started, those that others have taken will come back.
MediaWorker::Process MediaWorker::take() {
    State& state = *m_state;
    std::unique_lock lock(state.mutex);
    for (bool mayTry = true;; mayTry = false) {
        bool starts = false;
        state.changed.wait(lock, [&] {
            starts =
                mayTry && state.idle.empty() && state.count < m_settings.processes && mayStart();
            return starts || !state.idle.empty() || state.count == 0;
        });
        if (!state.idle.empty()) {
            Process process = std::move(state.idle.back());
            state.idle.pop_back();
            return process;
        }
        if (!starts) {
            state.changed.notify_one(); // the next one learns it from this one
            return nullptr;
        }
        ++state.count;
        lock.unlock();
        if (Process process = started()) {
            return process;
        }
        lock.lock();
    }
}

bool MediaWorker::mayStart() const {
    return std::chrono::steady_clock::now() >= m_state->noStartBefore &&
           ::access(m_settings.program.c_str(), X_OK) == 0;
}

// The new process is counted already.
MediaWorker::Process MediaWorker::started() {
    Process process;
    try {
        process = opened();
        if (process && serves(*process)) {
            return process;
        }
    } catch (const std::bad_alloc&) { // as good as no process
    }
    {
        const std::lock_guard lock(m_state->mutex);
        m_state->noStartBefore = std::chrono::steady_clock::now() + m_settings.pause;
    }
    discard(std::move(process));
    return nullptr;
}

// No copy of this process can be made unless it finds in the list what it has to close.
MediaWorker::Process MediaWorker::opened() {
    const std::lock_guard lock(m_state->mutex);
    Process process = WorkerProcess::create(m_settings.limits);
    if (process) {
        m_state->all.push_back(process.get());
    }
    return process;
}

bool MediaWorker::serves(WorkerProcess& process) {
    process.start(m_settings.program);
    {
        const std::lock_guard lock(m_state->mutex);
        process.releaseOtherEnds();
    }
    return process.becomesReady();
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
