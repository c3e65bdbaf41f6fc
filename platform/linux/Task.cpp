// SPDX-License-Identifier: Apache-2.0
#include "platform/Task.h"

#include "platform/DispatchQueue.h"
#include "platform/linux/Descriptor.h"
#include "platform/linux/Spawn.h"

#include <array>
#include <cerrno>
#include <csignal>
#include <mutex>
#include <new>
#include <optional>
#include <system_error>
#include <utility>

#include <fcntl.h>
#include <unistd.h>

// Version 2.36 of the C library forgot to say so itself.
extern "C" {
#include <sys/pidfd.h>
}

namespace platform {
namespace {

/// A pipe, or the null device in its place.
struct Channel {
    Descriptor reading;
    Descriptor writing;
    int error = 0;
};

Channel channelTo(Task::Output output) {
    Channel channel;
    if (output == Task::Output::nullDevice) {
        return channel;
    }
    std::array<int, 2> ends{-1, -1};
    if (::pipe2(ends.data(), O_CLOEXEC) != 0) {
        channel.error = errno;
        return channel;
    }
    channel.reading = aboveStandardStreams(Descriptor(ends[0]));
    channel.writing = aboveStandardStreams(Descriptor(ends[1]));
    if (channel.reading.number() < 0 || channel.writing.number() < 0) {
        channel.error = errno;
    }
    return channel;
}

Task::LaunchError launchError(int error) {
    return {std::generic_category().message(error)};
}

} // namespace

/// The process and a descriptor of it, by which it cannot be mistaken for a later one that got its
/// number.
class Task::Process {
public:
    Process() = default;
    Process(const Process&) = delete;
    Process& operator=(const Process&) = delete;
    Process(Process&&) = delete;
    Process& operator=(Process&&) = delete;
    // Nobody else can clear it away any more, and it may run for long.
    ~Process() {
        try {
            if (m_process > 0 && !m_status) {
                DispatchQueue::async(DispatchQueue::QualityOfService::defaultClass,
                                     [process = m_process] { waitForProcess(process); });
            }
        } catch (const std::bad_alloc&) {
            // It stays on the system's list until this process ends, no more.
        }
    }

    // Answers the system's error number, or 0. To be called once.
    [[nodiscard]] int start(const SpawnRequest& request) {
        const SpawnResult result = spawn(request);
        if (result.error != 0) {
            return result.error;
        }
        m_reference = Descriptor(::pidfd_open(result.process, 0));
        if (m_reference.number() < 0) {
            const int failure = errno;
            ::kill(result.process, SIGKILL);
            waitForProcess(result.process);
            return failure;
        }
        m_process = result.process;
        return 0;
    }

    void terminate() const { ::pidfd_send_signal(m_reference.number(), SIGTERM, nullptr, 0); }

    int wait() {
        const std::lock_guard lock(m_mutex);
        if (!m_status) {
            m_status = waitForProcess(m_process).value_or(-1);
        }
        return *m_status;
    }

private:
    pid_t m_process = -1;
    Descriptor m_reference;
    std::mutex m_mutex;
    std::optional<int> m_status;
};

std::variant<std::shared_ptr<Task>, Task::LaunchError> Task::launch(const Command& command) {
    Channel output = channelTo(command.standardOutput);
    Channel error = channelTo(command.standardError);
    if (const int failure = output.error != 0 ? output.error : error.error; failure != 0) {
        return launchError(failure);
    }
    SpawnRequest request;
    request.program = command.executable;
    request.command.push_back(command.executable);
    request.command.insert(request.command.end(), command.arguments.begin(),
                           command.arguments.end());
    request.streams = {SpawnRequest::nullDevice, output.writing.number(), error.writing.number()};
    // What needs memory comes before the program runs: a lack of it must not lose the process.
    std::shared_ptr<Task> task(new Task(std::make_unique<Process>(),
                                        FileHandle::fromDescriptor(output.reading.release()),
                                        FileHandle::fromDescriptor(error.reading.release())));
    if (const int failure = task->m_process->start(request); failure != 0) {
        return launchError(failure);
    }
    return task;
}

Task::Task(std::unique_ptr<Process> process, FileHandle standardOutput, FileHandle standardError)
    : m_process(std::move(process))
    , m_standardOutput(std::move(standardOutput))
    , m_standardError(std::move(standardError)) {}

Task::~Task() = default;

void Task::terminate() const {
    m_process->terminate();
}

int Task::waitUntilExit() {
    return m_process->wait();
}

} // namespace platform
