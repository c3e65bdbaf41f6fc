// SPDX-License-Identifier: Apache-2.0
#include "platform/linux/hdiutil/LoopDevice.h"

#include <cerrno>
#include <utility>

#include <fcntl.h>

#include <linux/loop.h>
#include <sys/ioctl.h>

namespace platform::hdiutil {
namespace {

Descriptor openedFor(const std::string& path, bool isReadOnly) {
    return Descriptor(::open(path.c_str(), (isReadOnly ? O_RDONLY : O_RDWR) | O_CLOEXEC));
}

int freeNumber() {
    const Descriptor control(::open("/dev/loop-control", O_RDWR | O_CLOEXEC));
    return control.number() < 0 ? -1 : ::ioctl(control.number(), LOOP_CTL_GET_FREE);
}

} // namespace

std::optional<LoopDevice> LoopDevice::attach(const std::string& file, std::uint64_t offset,
                                             std::uint64_t length, bool isReadOnly) {
    const Descriptor backing = openedFor(file, isReadOnly);
    if (backing.number() < 0) {
        return std::nullopt;
    }
    loop_config config{};
    config.fd = static_cast<std::uint32_t>(backing.number());
    config.info.lo_offset = offset;
    config.info.lo_sizelimit = length;
    config.info.lo_flags =
        LO_FLAGS_AUTOCLEAR | (isReadOnly ? static_cast<std::uint32_t>(LO_FLAGS_READ_ONLY) : 0U);
    // Between the answer and its use another program may take the device.
    constexpr int attempts = 20;
    errno = EBUSY;
    for (int i = 0; i < attempts && errno == EBUSY; ++i) {
        const int number = freeNumber();
        std::string path = "/dev/loop" + std::to_string(number);
        Descriptor device = number < 0 ? Descriptor() : openedFor(path, isReadOnly);
        if (device.number() >= 0 && ::ioctl(device.number(), LOOP_CONFIGURE, &config) == 0) {
            return LoopDevice(std::move(device), std::move(path));
        }
    }
    return std::nullopt;
}

} // namespace platform::hdiutil
