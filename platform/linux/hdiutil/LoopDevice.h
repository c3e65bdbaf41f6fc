// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "platform/linux/Descriptor.h"

#include <cstdint>
#include <optional>
#include <string>
#include <utility>

namespace platform::hdiutil {

/// A block device over a stretch of a file (loop(4)). The system gives it back when nobody uses it
/// any more: this object, a mount, or another program.
class LoopDevice {
public:
    /// Makes a device of `length` bytes of `file` from `offset` on; nullopt, with errno set, when
    /// the system refuses.
    [[nodiscard]] static std::optional<LoopDevice>
    attach(const std::string& file, std::uint64_t offset, std::uint64_t length, bool isReadOnly);

    /// "/dev/loop7".
    [[nodiscard]] const std::string& path() const { return m_path; }

private:
    LoopDevice(Descriptor device, std::string path)
        : m_device(std::move(device))
        , m_path(std::move(path)) {}
    Descriptor m_device;
    std::string m_path;
};

} // namespace platform::hdiutil
