// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "fuzz/Fuzzing.h"
#include "platform/linux/Descriptor.h"

#include <array>
#include <cerrno>
#include <cstring>
#include <mutex>
#include <thread>

#include <unistd.h>

#include <sys/socket.h>
#include <sys/un.h>

namespace fuzzing {

/// A bus in this process that listens to nobody: whoever connects is told the same, and that this
/// is all.
class StandInBus {
public:
    /// Serves until the process ends.
    StandInBus()
        : m_listener(::socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0)) {
        sockaddr_un address{};
        address.sun_family = AF_UNIX;
        // A name that begins with zero is in no folder.
        const std::string name = "qm-fuzz-" + std::to_string(::getpid());
        name.copy(address.sun_path + 1, sizeof address.sun_path - 1);
        const auto length = offsetof(sockaddr_un, sun_path) + 1 + name.size();
        require(::bind(m_listener.number(), reinterpret_cast<const sockaddr*>(&address),
                       static_cast<socklen_t>(length)) == 0);
        require(::listen(m_listener.number(), 8) == 0);
        m_address = "unix:abstract=" + name;
        std::thread([this] { serve(); }).detach();
    }

    [[nodiscard]] const std::string& address() const { return m_address; }

    /// What the next ones who connect are told behind the greeting.
    void say(std::string bytes) {
        const std::lock_guard lock(m_mutex);
        m_bytes = std::move(bytes);
    }

private:
    void serve() {
        while (true) {
            const platform::Descriptor guest(
                ::accept4(m_listener.number(), nullptr, nullptr, SOCK_CLOEXEC));
            if (guest.number() >= 0) {
                tell(guest.number());
            }
        }
    }

    // Whoever closes a socket with something unread in it takes back what he has said.
    void tell(int guest) {
        {
            const std::lock_guard lock(m_mutex);
            static_cast<void>(::send(guest, m_bytes.data(), m_bytes.size(), MSG_NOSIGNAL));
        }
        ::shutdown(guest, SHUT_WR);
        std::array<char, 4096> ignored{};
        while (::read(guest, ignored.data(), ignored.size()) > 0 || errno == EINTR) {
            errno = 0;
        }
    }

    platform::Descriptor m_listener;
    std::string m_address;
    std::mutex m_mutex;
    std::string m_bytes;
};

} // namespace fuzzing
