// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "platform/linux/MessageBus.h"

#include <cstdint>
#include <optional>
#include <string>
#include <utility>

namespace platform::hdiutil {

/// The disk service of the system (udisks2, "org.freedesktop.UDisks2" on the system bus), which
/// makes devices and mounts for users who may not do so themselves. It never asks anybody for a
/// password here. One thread at a time. Failures set errno: EBUSY, EPERM, ETIMEDOUT, ENOTCONN, or
/// EIO for any other.
class Udisks {
public:
    /// A connection that is kept for the life of the process. nullptr where there is no system bus;
    /// whether the service is there, its answers tell.
    [[nodiscard]] static Udisks* shared();

    /// Makes a block device of `length` bytes of `file` from `offset` on, which this process must
    /// be able to open. Answers its path, "/dev/loop7".
    [[nodiscard]] std::optional<std::string> addLoop(const std::string& file, std::uint64_t offset,
                                                     std::uint64_t length, bool isReadOnly);

    /// Takes such a device away.
    [[nodiscard]] bool removeLoop(const std::string& device);

    /// Mounts the file system of a block device where the service likes. Answers the mount point.
    [[nodiscard]] std::optional<std::string> mount(const std::string& device);

    /// Unmounts it; true also when it was not mounted, or has nothing that could be.
    [[nodiscard]] bool unmount(const std::string& device);

private:
    explicit Udisks(MessageBus open)
        : m_bus(std::move(open)) {}

    [[nodiscard]] BusReply call(const std::string& path, std::string_view interface,
                                std::string_view member, std::optional<int> descriptor,
                                std::vector<BusOption> options);
    [[nodiscard]] BusReply callForDevice(const std::string& device, std::string_view interface,
                                         std::string_view member);

    MessageBus m_bus;
    bool m_isSilent = false; ///< it has not answered in time, and is asked no more
};

} // namespace platform::hdiutil
