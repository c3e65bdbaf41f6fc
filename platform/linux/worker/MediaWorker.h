// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "platform/linux/worker/WorkerProcess.h"

#include <chrono>
#include <cstdint>
#include <functional>
#include <memory>
#include <string>

namespace platform::worker {

/// Has media files read by processes that may do nothing else, as the libraries that read them
/// are large and fall over hostile files. The processes are started when they are needed and kept;
/// one that ends, takes too long or answers nonsense is replaced. Any thread, several at once.
class MediaWorker {
public:
    struct Settings {
        std::string program;
        TimeLimits limits;
        unsigned processes = 1; ///< at most, one file at a time in each
        /// Then a process is replaced, so that what the libraries lose or spoil does not add up.
        std::uint64_t requestsPerProcess = 4096;
        /// How long nothing is started after a process that did not become ready.
        std::chrono::milliseconds pause{10'000};
    };
    explicit MediaWorker(Settings settings);
    MediaWorker(const MediaWorker&) = delete;
    MediaWorker& operator=(const MediaWorker&) = delete;
    MediaWorker(MediaWorker&&) = delete;
    MediaWorker& operator=(MediaWorker&&) = delete;
    /// No request may be under way.
    ~MediaWorker();

    /// The one for files of this kind that all of this process share.
    [[nodiscard]] static MediaWorker& shared(MediaKind kind);

    /// Takes over the value of an answer; false when it is not what was asked for.
    using Reader = std::function<bool(DataView)>;
    enum class Outcome {
        value,
        nothing, ///< the file can be read as nothing of that kind
        failed,  ///< it takes too long or is the end of the process that reads it, or there is none
    };
    /// Has the file `descriptor`, whose position may move, read as `request` says. When a process
    /// that has read other files before ends or answers nonsense, no blame is put on this one: it
    /// is read once more by a new process, and `reader` may be called once more. Blocks, at worst
    /// for both limits of time twice over, and for others to finish.
    [[nodiscard]] Outcome ask(const MediaRequest& request, int descriptor, const Reader& reader);

private:
    struct State;
    class Registry;
    class Lease;
    using Process = std::unique_ptr<WorkerProcess>;

    [[nodiscard]] Process take();
    [[nodiscard]] Process started();
    [[nodiscard]] Process opened();
    [[nodiscard]] bool serves(WorkerProcess& process);
    [[nodiscard]] Process replacementFor(Process process);
    void giveBack(Process process);
    void discard(Process process);
    [[nodiscard]] bool mayStart() const;

    Settings m_settings;
    std::unique_ptr<State> m_state;
};

} // namespace platform::worker
