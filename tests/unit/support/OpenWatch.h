// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "platform/linux/Descriptor.h"

#include <array>
#include <cstddef>
#include <cstring>
#include <string>

#include <unistd.h>

#include <gtest/gtest.h>
#include <sys/inotify.h>

/// Sees whether a file in a folder is opened, by whatever process. Folders do not count: whoever
/// searches the machine, as another test may, opens them all.
class OpenWatch {
public:
    explicit OpenWatch(const std::string& folder)
        : m_descriptor(::inotify_init1(IN_CLOEXEC | IN_NONBLOCK)) {
        EXPECT_GE(::inotify_add_watch(m_descriptor.number(), folder.c_str(), IN_OPEN), 0);
    }

    /// Since it was last asked.
    [[nodiscard]] bool hasSeenAny() const {
        alignas(inotify_event) std::array<char, 4096> events{};
        bool isSeen = false;
        while (true) {
            const ssize_t size = ::read(m_descriptor.number(), events.data(), events.size());
            if (size <= 0) {
                return isSeen;
            }
            for (std::size_t at = 0; at < static_cast<std::size_t>(size);) {
                inotify_event event{};
                std::memcpy(&event, &events.at(at), sizeof event);
                isSeen = isSeen || (event.mask & IN_ISDIR) == 0;
                at += sizeof event + event.len;
            }
        }
    }

private:
    platform::Descriptor m_descriptor;
};
