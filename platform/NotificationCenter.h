// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "platform/Export.h"
#include "platform/FileURL.h"

#include <cstdint>
#include <functional>
#include <map>
#include <memory>
#include <string>
#include <string_view>
#include <variant>

namespace platform {

/// An announcement to whoever wants to know.
struct QM_EXPORT Notification {
    /// What can be sent along.
    using Value = std::variant<std::string, FileURL>;

    std::string name;             ///< by which observers ask for it
    const void* object = nullptr; ///< whom it is about; only to be compared
    std::map<std::string, Value, std::less<>>
        userInfo; ///< what is sent along, by names that go with `name`
};

/// Hands notifications to observers. Any thread.
class QM_EXPORT NotificationCenter {
public:
    /// Called on the thread that posts; what it throws reaches whoever posts.
    using Handler = std::function<void(const Notification&)>;
    /// Names an observer; never used again for another one.
    enum class Token : std::uint64_t {};

    /// The one that services post to. Lives as long as the process.
    [[nodiscard]] static NotificationCenter& defaultCenter();

    NotificationCenter();
    NotificationCenter(const NotificationCenter&) = delete;
    NotificationCenter& operator=(const NotificationCenter&) = delete;
    NotificationCenter(NotificationCenter&&) = delete;
    NotificationCenter& operator=(NotificationCenter&&) = delete;
    ~NotificationCenter();

    /// Has `handler` called for every later notification called `name` that is about `object`, or
    /// about anything when `object` is null, until the observer is removed.
    [[nodiscard]] Token addObserver(std::string_view name, const void* object, Handler handler);

    /// Ends that. A post that is under way on another thread may still call the handler.
    void removeObserver(Token token);

    /// Calls the handlers on this thread, in the order in which they were added, and returns when
    /// all have returned. Handlers may post, add and remove observers; one that is removed by an
    /// earlier handler is not called any more.
    void post(const Notification& notification);

private:
    struct Observers;
    std::unique_ptr<Observers> m_observers;
};

} // namespace platform
