// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <utility>

#include <fcntl.h>
#include <unistd.h>

namespace platform {

/// A file descriptor that is closed at the end; -1 for none.
class Descriptor {
public:
    Descriptor() = default;
    explicit Descriptor(int number)
        : m_number(number) {}
    Descriptor(Descriptor&& other) noexcept
        : m_number(std::exchange(other.m_number, -1)) {}
    Descriptor& operator=(Descriptor&& other) noexcept {
        std::swap(m_number, other.m_number);
        return *this;
    }
    Descriptor(const Descriptor&) = delete;
    Descriptor& operator=(const Descriptor&) = delete;
    ~Descriptor() {
        if (m_number >= 0) {
            ::close(m_number);
        }
    }

    [[nodiscard]] int number() const { return m_number; }
    /// Leaves the closing to the caller.
    [[nodiscard]] int release() { return std::exchange(m_number, -1); }

private:
    int m_number = -1;
};

/// The same file under a number above those of the standard streams, where it is in the way of no
/// child's; the number is -1, and errno says why, when there is none left. Closed on exec.
inline Descriptor aboveStandardStreams(Descriptor descriptor) {
    if (descriptor.number() < 0 || descriptor.number() > STDERR_FILENO) {
        return descriptor;
    }
    return Descriptor(::fcntl(descriptor.number(), F_DUPFD_CLOEXEC, STDERR_FILENO + 1));
}

} // namespace platform
