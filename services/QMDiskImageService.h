// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "foundation/QMError.h"
#include "platform/Data.h"
#include "platform/Export.h"
#include "platform/FileURL.h"
#include "platform/PropertyList.h"

#include <chrono>
#include <cstdint>
#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <variant>

/// The domain of the service's errors.
inline constexpr std::string_view QMDiskImageErrorDomain = "QMDiskImage";
/// The codes of that domain.
enum QMDiskImageErrorCode : std::int64_t {
    QMDiskImageErrorNotFound = -1,     ///< there is nothing at the path
    QMDiskImageErrorNotMountable = -2, ///< not the name of a disk image
    QMDiskImageErrorLaunch = -3,       ///< the tool could not be started
    QMDiskImageErrorTool = -4,         ///< the tool failed, on mounting or on unmounting
    QMDiskImageErrorTimeout = -5,      ///< mounting took too long
    QMDiskImageErrorNoMountPoint = -6, ///< the tool did not say where the image is mounted
};

/// Posted after an image was mounted, with "mountPoint", a file URL, and "sourcePath", the image's
/// path as it was given. The object is the service.
inline constexpr std::string_view QMDiskImageDidMountNotification =
    "QMDiskImageDidMountNotification";
/// Posted after a volume was unmounted, with "mountPath", its path. The object is the service.
inline constexpr std::string_view QMDiskImageDidUnmountNotification =
    "QMDiskImageDidUnmountNotification";

/// Mounts and unmounts disk images and describes them, by running the system's disk-image tool.
/// Services live in shared pointers. Any thread; completions and notifications come on the main
/// queue, which somebody must service, a notification before the completion. Operations may run
/// side by side. Paths are bytes.
class QM_EXPORT QMDiskImageService : public std::enable_shared_from_this<QMDiskImageService> {
public:
    /// What a service works with. Others than the defaults are for tests.
    struct Settings {
        std::string tool; ///< the tool's path; empty for the system's
        std::chrono::nanoseconds mountTimeout =
            std::chrono::seconds(120); ///< until mounting is given up
    };

    /// The one service of the process, made when it is first asked for.
    [[nodiscard]] static const std::shared_ptr<QMDiskImageService>& sharedService();

    /// A service of its own, which knows of no mounts.
    [[nodiscard]] static std::shared_ptr<QMDiskImageService> init();
    /// The same with settings of its own.
    [[nodiscard]] static std::shared_ptr<QMDiskImageService> init(Settings settings);

    /// Whether the name at the end of `path` is that of a disk image which can be mounted. Told by
    /// the extension alone; the file system is not touched. False for an empty path. Any thread.
    [[nodiscard]] static bool isMountableDiskImage(std::string_view path);

    /// The images that this service has mounted: paths of mount points, without trailing slash,
    /// and the images' paths as they were given. Not compared with what is really mounted. Changes
    /// that are made at the same moment can undo one another.
    using MountedImages = std::map<std::string, std::string, std::less<>>;
    /// What is known now. Any thread.
    [[nodiscard]] MountedImages mountedImages() const;
    /// Replaces what is known; mounts and unmounts nothing. Any thread.
    void setMountedImages(MountedImages images);

    /// Gets the mount point, or the error.
    using MountCompletion =
        std::function<void(std::optional<platform::FileURL>, std::optional<QMError>)>;
    /// Mounts the image at `path` and returns at once. `completion` may be empty; otherwise it is
    /// called exactly once. After two minutes the tool is asked to end, and the outcome is
    /// QMDiskImageErrorTimeout.
    void mountDiskImage(const std::string& path, MountCompletion completion);

    /// Gets the error, if any.
    using UnmountCompletion = std::function<void(std::optional<QMError>)>;
    /// Unmounts `volume`, whoever has mounted it, and returns at once; never by force and without a
    /// time limit. `completion` may be empty; otherwise it is called exactly once. Without a volume
    /// there is nothing to do, and it is called before this returns, on this thread.
    void unmountVolume(const std::optional<platform::FileURL>& volume,
                       UnmountCompletion completion);

    /// What the tool tells of the image at `path`; nullopt when it tells nothing, for whatever
    /// reason. Blocks until the tool has ended.
    [[nodiscard]] std::optional<platform::PropertyList::Dictionary>
    diskImageInfoForPath(const std::string& path) const;

    /// The first mount point that the tool's output on attaching names; nullopt when it names none
    /// or is damaged. The bytes may be hostile.
    [[nodiscard]] static std::optional<platform::FileURL>
    parseMountPointFromPlistData(platform::DataView output);

    /// An error of this domain, described as "Unknown error" unless a description is given.
    [[nodiscard]] static QMError errorWithCode(std::int64_t code,
                                               std::optional<std::string> description);

private:
    using Images = std::shared_ptr<const MountedImages>;
    using Mounting = std::variant<platform::FileURL, QMError>;

    explicit QMDiskImageService(Settings settings);

    [[nodiscard]] std::string toolPath() const;
    [[nodiscard]] Mounting attach(const std::string& path) const;
    [[nodiscard]] std::optional<QMError> detach(const std::string& path) const;
    void recordMounting(const std::string& path, const Mounting& outcome);
    void forgetMounting(const std::string& path);
    void finishMounting(const std::string& path, const Mounting& outcome,
                        const MountCompletion& completion);
    void finishUnmounting(const std::string& path, const std::optional<QMError>& error,
                          const UnmountCompletion& completion);

    Settings m_settings;
    Images m_mountedImages; ///< only through std::atomic_load and std::atomic_store
};
