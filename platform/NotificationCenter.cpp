// SPDX-License-Identifier: Apache-2.0
// Needs nothing of the system, so there is one implementation for all.
#include "platform/NotificationCenter.h"

#include <mutex>
#include <utility>
#include <vector>

namespace platform {

struct NotificationCenter::Observers {
    struct Observer {
        std::string name;
        const void* object;
        std::shared_ptr<const Handler> handler;
    };

    std::mutex mutex;
    std::map<Token, Observer> byToken; // tokens grow, so this is the order of adding
    std::uint64_t lastToken = 0;

    std::vector<Token> interestedIn(const Notification& notification) {
        const std::lock_guard lock(mutex);
        std::vector<Token> tokens;
        for (const auto& [token, observer] : byToken) {
            if (observer.name == notification.name &&
                (observer.object == nullptr || observer.object == notification.object)) {
                tokens.push_back(token);
            }
        }
        return tokens;
    }

    std::shared_ptr<const Handler> handlerOf(Token token) {
        const std::lock_guard lock(mutex);
        const auto found = byToken.find(token);
        return found == byToken.end() ? nullptr : found->second.handler;
    }
};

NotificationCenter& NotificationCenter::defaultCenter() {
    // Never destroyed: workers may still post while the process ends.
    static NotificationCenter& center = *new NotificationCenter;
    return center;
}

NotificationCenter::NotificationCenter()
    : m_observers(std::make_unique<Observers>()) {}

NotificationCenter::~NotificationCenter() = default;

NotificationCenter::Token NotificationCenter::addObserver(std::string_view name, const void* object,
                                                          Handler handler) {
    auto shared = std::make_shared<const Handler>(std::move(handler));
    const std::lock_guard lock(m_observers->mutex);
    const Token token{++m_observers->lastToken};
    m_observers->byToken.emplace(token,
                                 Observers::Observer{std::string(name), object, std::move(shared)});
    return token;
}

void NotificationCenter::removeObserver(Token token) {
    // What the handler holds is freed after the lock: it may remove observers as it goes.
    decltype(m_observers->byToken)::node_type removed;
    const std::lock_guard lock(m_observers->mutex);
    removed = m_observers->byToken.extract(token);
}

void NotificationCenter::post(const Notification& notification) {
    for (const Token token : m_observers->interestedIn(notification)) {
        if (const auto handler = m_observers->handlerOf(token)) {
            (*handler)(notification);
        }
    }
}

} // namespace platform
