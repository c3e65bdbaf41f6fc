// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "platform/SystemLog.h"

#include <string>
#include <string_view>
#include <vector>

/// Collects what is logged while it lives. Needs no lock: the sink is called for one message at
/// a time.
class LogRecorder {
public:
    LogRecorder() {
        platform::SystemLog::setSink(
            [this](std::string_view message) { messages.emplace_back(message); });
    }
    LogRecorder(const LogRecorder&) = delete;
    LogRecorder(LogRecorder&&) = delete;
    LogRecorder& operator=(const LogRecorder&) = delete;
    LogRecorder& operator=(LogRecorder&&) = delete;
    ~LogRecorder() { platform::SystemLog::setSink({}); }

    std::vector<std::string> messages;
};
