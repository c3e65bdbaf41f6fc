// SPDX-License-Identifier: Apache-2.0
#include "platform/SystemLog.h"

#include <cstddef>
#include <memory>
#include <mutex>
#include <string>
#include <utility>

#include <syslog.h>

namespace platform::SystemLog {

namespace {

/// Where messages go. The mutex is held while the sink runs, so that it sees one at a time.
struct State {
    std::mutex mutex;
    std::shared_ptr<const Sink> sink;
};

/// Never destroyed: threads may still log while the process ends.
State& sharedState() {
    static State& state = *new State;
    return state;
}

/// Whether the calling thread is inside the sink and therefore holds the mutex.
thread_local bool insideSink = false;

class SinkScope {
public:
    SinkScope() { insideSink = true; }
    SinkScope(const SinkScope&) = delete;
    SinkScope(SinkScope&&) = delete;
    SinkScope& operator=(const SinkScope&) = delete;
    SinkScope& operator=(SinkScope&&) = delete;
    ~SinkScope() { insideSink = false; }
};

/// The number of bytes of the control character or line separator that `text` begins with; 0 for
/// any other character. `text` must not be empty.
std::size_t controlLength(std::string_view text) {
    const auto byteAt = [text](std::size_t index) -> unsigned {
        return index < text.size() ? static_cast<unsigned char>(text[index]) : 0U;
    };
    if (byteAt(0) < 0x20U || byteAt(0) == 0x7FU) {
        return 1;
    }
    if (byteAt(0) == 0xC2U && byteAt(1) >= 0x80U && byteAt(1) <= 0x9FU) {
        return 2; // U+0080 to U+009F, among them NEXT LINE
    }
    if (byteAt(0) == 0xE2U && byteAt(1) == 0x80U && (byteAt(2) == 0xA8U || byteAt(2) == 0xA9U)) {
        return 3; // LINE SEPARATOR, PARAGRAPH SEPARATOR
    }
    return 0;
}

/// `message` as a single line that says nothing to a terminal but text.
std::string singleLine(std::string_view message) {
    std::string line;
    line.reserve(message.size());
    while (!message.empty()) {
        const std::size_t control = controlLength(message);
        line.push_back(control == 0 ? message.front() : ' ');
        message.remove_prefix(control == 0 ? 1 : control);
    }
    return line;
}

/// Hands `line` to the sink; false when there is none to take it.
bool deliveredToSink(std::string_view line) {
    if (insideSink) {
        return false;
    }
    State& state = sharedState();
    // Declared before the lock: a sink that replaces itself is destroyed after the mutex is free.
    std::shared_ptr<const Sink> sink;
    const std::lock_guard lock(state.mutex);
    sink = state.sink;
    if (!sink) {
        return false;
    }
    const SinkScope scope;
    (*sink)(line);
    return true;
}

} // namespace

void error(std::string_view message) {
    const std::string line = singleLine(message);
    if (!deliveredToSink(line)) {
        // Without openlog: identity and options of the log belong to the program, not to a library
        // inside it, and the defaults print nothing on standard error or the console.
        syslog(LOG_USER | LOG_ERR, "%s", line.c_str());
    }
}

void setSink(Sink sink) {
    State& state = sharedState();
    auto replacement = sink ? std::make_shared<const Sink>(std::move(sink)) : nullptr;
    // The previous sink leaves with `replacement`, after the lock: it may log as it goes.
    std::unique_lock lock(state.mutex, std::defer_lock);
    if (!insideSink) {
        lock.lock();
    }
    state.sink.swap(replacement);
}

} // namespace platform::SystemLog
