// SPDX-License-Identifier: Apache-2.0
#include "platform/linux/hdiutil/LoopDevice.h"

#include <cerrno>
#include <utility>

#include <fcntl.h>
#include <unistd.h>

#include <linux/loop.h>
#include <sys/ioctl.h>

namespace platform::hdiutil {
namespace {

// Closes a descriptor and leaves errno as it was.
void closeQuietly(int descriptor) {
    const int error = errno;
    if (descriptor >= 0) {
        ::close(descriptor);
    }
    errno = error;
}

int freeNumber() {
    const int control = ::open("/dev/loop-control", O_RDWR | O_CLOEXEC);
    const int number = control < 0 ? -1 : ::ioctl(control, LOOP_CTL_GET_FREE);
    closeQuietly(control);
    return number;
}

// Answers the open device, or -1.
int configured(const std::string& path, const loop_config& config, bool isReadOnly) {
    const int device = ::open(path.c_str(), (isReadOnly ? O_RDONLY : O_RDWR) | O_CLOEXEC);
    if (device < 0 || ::ioctl(device, LOOP_CONFIGURE, &config) == 0) {
        return device;
    }
    closeQuietly(device);
    return -1;
}

} // namespace

std::optional<LoopDevice> LoopDevice::attach(const std::string& file, std::uint64_t offset,
                                             std::uint64_t length, bool isReadOnly) {
    const int backing = ::open(file.c_str(), (isReadOnly ? O_RDONLY : O_RDWR) | O_CLOEXEC);
    if (backing < 0) {
        return std::nullopt;
    }
    loop_config config{};
    config.fd = static_cast<std::uint32_t>(backing);
    config.info.lo_offset = offset;
    config.info.lo_sizelimit = length;
    config.info.lo_flags =
        LO_FLAGS_AUTOCLEAR | (isReadOnly ? static_cast<std::uint32_t>(LO_FLAGS_READ_ONLY) : 0U);
    // Between the answer and its use another program may take the device.
    constexpr int attempts = 20;
    std::optional<LoopDevice> result;
    errno = EBUSY;
    for (int i = 0; i < attempts && !result && errno == EBUSY; ++i) {
        const int number = freeNumber();
        std::string path = "/dev/loop" + std::to_string(number);
        const int device = number < 0 ? -1 : configured(path, config, isReadOnly);
        if (device >= 0) {
            result = LoopDevice(device, std::move(path));
        }
    }
    closeQuietly(backing);
    return result;
}

LoopDevice::LoopDevice(LoopDevice&& other) noexcept
    : m_descriptor(std::exchange(other.m_descriptor, -1))
    , m_path(std::move(other.m_path)) {}

LoopDevice& LoopDevice::operator=(LoopDevice&& other) noexcept {
    std::swap(m_descriptor, other.m_descriptor);
    std::swap(m_path, other.m_path);
    return *this;
}

LoopDevice::~LoopDevice() {
    closeQuietly(m_descriptor);
}

} // namespace platform::hdiutil
