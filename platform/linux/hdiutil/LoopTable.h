// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <cstdint>
#include <string>
#include <vector>

/// What the kernel tells everybody about loop devices and mounts (sysfs, /sys/block/loop7/loop;
/// proc(5), /proc/[pid]/mountinfo).
namespace platform::hdiutil::LoopTable {

/// Whether the loop device `device` ("/dev/loop7") shows `file`, a path without links, from
/// `offset` on.
[[nodiscard]] bool shows(const std::string& device, const std::string& file, std::uint64_t offset);

/// The number that the system has given to what the loop device shows, and to nothing else since it
/// was started (sysfs, /sys/block/loop7/diskseq). 0 when it shows nothing, or the system is too
/// old.
[[nodiscard]] std::uint64_t sequenceOf(const std::string& device);

/// The loop devices that show that, and that nothing is mounted from.
[[nodiscard]] std::vector<std::string> unusedDevices(const std::string& file, std::uint64_t offset);

/// Whether a file system is mounted from a loop device that writes to `file`, or from a partition
/// of one.
[[nodiscard]] bool isInUseForWriting(const std::string& file);

/// Where the file system of a block device is mounted; empty where it is not.
[[nodiscard]] std::string mountPointOf(const std::string& device);

/// What is mounted at `path`, as far as that is a device; empty otherwise.
[[nodiscard]] std::string deviceMountedAt(const std::string& path);

} // namespace platform::hdiutil::LoopTable
