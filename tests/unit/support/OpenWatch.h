// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "platform/linux/Descriptor.h"

#include <array>
#include <string>

#include <unistd.h>

#include <gtest/gtest.h>
#include <sys/inotify.h>

/// Sees whether anything in a folder is opened, by whatever process.
class OpenWatch {
public:
    explicit OpenWatch(const std::string& folder)
        : m_descriptor(::inotify_init1(IN_CLOEXEC | IN_NONBLOCK)) {
        EXPECT_GE(::inotify_add_watch(m_descriptor.number(), folder.c_str(), IN_OPEN), 0);
    }

    /// Since it was last asked.
    [[nodiscard]] bool hasSeenAny() const {
        alignas(inotify_event) std::array<char, 4096> events{};
        return ::read(m_descriptor.number(), events.data(), events.size()) > 0;
    }

private:
    platform::Descriptor m_descriptor;
};
