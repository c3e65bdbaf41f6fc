// SPDX-License-Identifier: Apache-2.0
// A file of its own, so that a program without a main loop does not link one.
#include "foundation/QMFileHandle.h"
#include "platform/DispatchTimer.h"
#include "platform/FileManager.h"
#include "platform/Format.h"
#include "platform/LocalizedStrings.h"
#include "platform/NotificationCenter.h"
#include "platform/Task.h"
#include "platform/Text.h"
#include "services/QMDiskImageService.h"

#include <atomic>
#include <semaphore>
#include <utility>

namespace {

namespace DispatchQueue = platform::DispatchQueue;

using DispatchQueue::QualityOfService;
using platform::Data;
using platform::FileURL;
using platform::format;
using platform::Task;
using platform::LocalizedStrings::stringForKey;

std::string textOfErrorOutput(const std::optional<Data>& output) {
    return output ? platform::Text::fromUTF8(*output).value_or("Unknown error") : "Unknown error";
}

QMError errorOfLaunch(const Task::LaunchError& error) {
    return QMDiskImageService::errorWithCode(
        QMDiskImageErrorLaunch, format("Failed to launch hdiutil: {}", error.localizedDescription));
}

// Prepared for the case that there is none left to make another error of.
QMError errorWithoutMemory() {
    return errorOfLaunch({"Cannot allocate memory"});
}

QMError localizedError(QMDiskImageErrorCode code, const char* key) {
    return QMDiskImageService::errorWithCode(code, stringForKey(key));
}

/// Reads what a task writes to its standard error on another thread: a task that fills one pipe
/// while nobody reads it never comes to the other.
class ErrorOutput {
public:
    explicit ErrorOutput(const std::shared_ptr<Task>& task)
        : m_shared(std::make_shared<Shared>()) {
        DispatchQueue::async(QualityOfService::defaultClass, [task, shared = m_shared] {
            shared->bytes = qm_readDataToEndOfFile(task->standardError());
            shared->isRead.release();
        });
    }

    /// Waits for the end of the output; once.
    std::optional<Data> wait() {
        m_shared->isRead.acquire();
        return std::move(m_shared->bytes);
    }

private:
    struct Shared {
        std::optional<Data> bytes;
        std::binary_semaphore isRead{0};
    };
    std::shared_ptr<Shared> m_shared;
};

/// Asks a task to end when its time is over, until it is cancelled.
class Deadline {
public:
    Deadline(const std::shared_ptr<Task>& task, std::chrono::nanoseconds time)
        : m_isOver(std::make_shared<std::atomic<bool>>(false))
        , m_timer(platform::DispatchTimer::after(time, QualityOfService::defaultClass,
                                                 [task, isOver = m_isOver] {
                                                     *isOver = true;
                                                     task->terminate();
                                                 })) {}

    /// Ends the supervision and answers whether the time was over before.
    bool cancel() {
        m_timer.cancel();
        return *m_isOver;
    }

private:
    std::shared_ptr<std::atomic<bool>> m_isOver;
    platform::DispatchTimer m_timer;
};

} // namespace

void QMDiskImageService::mountDiskImage(const std::string& path, MountCompletion completion) {
    std::optional<QMError> refusal;
    if (path.empty() || !platform::FileManager::fileExistsAtPath(path)) {
        refusal = localizedError(QMDiskImageErrorNotFound, "diskImage.error.notFound");
    } else if (!isMountableDiskImage(path)) {
        refusal = localizedError(QMDiskImageErrorNotMountable, "diskImage.error.notMountable");
    }
    if (refusal) {
        if (completion) {
            DispatchQueue::asyncMain(
                [error = *std::move(refusal), completion = std::move(completion)] {
                    completion(std::nullopt, error);
                });
        }
        return;
    }
    const auto outcome = std::make_shared<Mounting>(errorWithoutMemory());
    DispatchQueue::asyncWithReply(
        QualityOfService::userInitiated,
        [self = shared_from_this(), path, outcome] {
            *outcome = self->attach(path);
            self->recordMounting(path, *outcome);
        },
        [self = shared_from_this(), path, outcome, completion = std::move(completion)] {
            self->finishMounting(path, *outcome, completion);
        });
}

QMDiskImageService::Mounting QMDiskImageService::attach(const std::string& path) const {
    const auto launched = Task::launch({.executable = toolPath(),
                                        .arguments = {"attach", path, "-plist", "-noverify"},
                                        .standardOutput = Task::Output::pipe,
                                        .standardError = Task::Output::pipe});
    if (const auto* error = std::get_if<Task::LaunchError>(&launched)) {
        return errorOfLaunch(*error);
    }
    const auto& task = std::get<std::shared_ptr<Task>>(launched);
    Deadline deadline(task, m_settings.mountTimeout);
    ErrorOutput errorOutput(task);
    const auto output = qm_readDataToEndOfFile(task->standardOutput());
    const auto errorBytes = errorOutput.wait();
    const int status = task->waitUntilExit();
    // A tool that was asked to end has a status too, so the time is looked at first.
    if (deadline.cancel()) {
        return localizedError(QMDiskImageErrorTimeout, "diskImage.error.timeout");
    }
    if (status != 0) {
        return errorWithCode(QMDiskImageErrorTool,
                             format("{}: {}", stringForKey("diskImage.error.mountFailed"),
                                    textOfErrorOutput(errorBytes)));
    }
    if (auto mountPoint = output ? parseMountPointFromPlistData(*output) : std::nullopt) {
        return *std::move(mountPoint);
    }
    return errorWithCode(QMDiskImageErrorNoMountPoint,
                         "Could not determine mount point from hdiutil output.");
}

void QMDiskImageService::recordMounting(const std::string& path, const Mounting& outcome) {
    if (const auto* mountPoint = std::get_if<FileURL>(&outcome)) {
        MountedImages images = mountedImages();
        images.insert_or_assign(mountPoint->path(), path);
        setMountedImages(std::move(images));
    }
}

// On the main queue.
void QMDiskImageService::finishMounting(const std::string& path, const Mounting& outcome,
                                        const MountCompletion& completion) {
    const auto* mountPoint = std::get_if<FileURL>(&outcome);
    if (mountPoint != nullptr) {
        platform::NotificationCenter::defaultCenter().post(
            {std::string(QMDiskImageDidMountNotification),
             this,
             {{"mountPoint", *mountPoint}, {"sourcePath", path}}});
    }
    if (!completion) {
        return;
    }
    if (mountPoint != nullptr) {
        completion(*mountPoint, std::nullopt);
    } else {
        completion(std::nullopt, std::get<QMError>(outcome));
    }
}

void QMDiskImageService::unmountVolume(const std::optional<FileURL>& volume,
                                       UnmountCompletion completion) {
    if (!volume) {
        if (completion) {
            completion(std::nullopt);
        }
        return;
    }
    const auto error = std::make_shared<std::optional<QMError>>(errorWithoutMemory());
    DispatchQueue::asyncWithReply(
        QualityOfService::userInitiated,
        [self = shared_from_this(), path = volume->path(), error] {
            *error = self->detach(path);
            if (!*error) {
                self->forgetMounting(path);
            }
        },
        [self = shared_from_this(), path = volume->path(), error,
         completion = std::move(completion)] { self->finishUnmounting(path, *error, completion); });
}

std::optional<QMError> QMDiskImageService::detach(const std::string& path) const {
    const auto launched = Task::launch({.executable = toolPath(),
                                        .arguments = {"detach", path},
                                        .standardOutput = Task::Output::nullDevice,
                                        .standardError = Task::Output::pipe});
    if (const auto* error = std::get_if<Task::LaunchError>(&launched)) {
        return errorOfLaunch(*error);
    }
    const auto& task = std::get<std::shared_ptr<Task>>(launched);
    const auto errorBytes = qm_readDataToEndOfFile(task->standardError());
    if (task->waitUntilExit() == 0) {
        return std::nullopt;
    }
    return errorWithCode(QMDiskImageErrorTool,
                         format("Failed to unmount: {}", textOfErrorOutput(errorBytes)));
}

void QMDiskImageService::forgetMounting(const std::string& path) {
    MountedImages images = mountedImages();
    images.erase(path);
    setMountedImages(std::move(images));
}

// On the main queue.
void QMDiskImageService::finishUnmounting(const std::string& path,
                                          const std::optional<QMError>& error,
                                          const UnmountCompletion& completion) {
    if (!error) {
        platform::NotificationCenter::defaultCenter().post(
            {std::string(QMDiskImageDidUnmountNotification), this, {{"mountPath", path}}});
    }
    if (completion) {
        completion(error);
    }
}
