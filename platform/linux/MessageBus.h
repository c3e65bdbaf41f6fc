// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "platform/VariantCopy.h"

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <variant>
#include <vector>

struct sd_bus;

namespace platform {

/// The value of an option: a text is sent as "s", bytes as "ay", a number as "t", a truth as "b".
using BusValue = std::variant<std::string, std::vector<std::byte>, std::uint64_t, bool>;
/// One entry of a dictionary "a{sv}".
struct BusOption {
    BusOption(std::string key, BusValue content)
        : name(std::move(key))
        , value(std::move(content)) {}
    BusOption(const BusOption& other)
        : name(other.name)
        , value(copyOf(other.value)) {}
    BusOption(BusOption&&) noexcept = default;
    BusOption& operator=(const BusOption&) = delete;
    BusOption& operator=(BusOption&&) noexcept = default;
    ~BusOption() = default;

    std::string name;
    BusValue value;
};

/// A method call whose arguments are, in this order, those there are of: a text ("s"), an open
/// descriptor ("h"), options ("a{sv}"). Texts must be UTF-8 without NUL.
struct BusCall {
    std::string destination;
    std::string path;
    std::string interface;
    std::string member;
    bool startsDestination = false; ///< the bus may start the owner of the name
    std::optional<std::string> text;
    std::optional<int> descriptor; ///< remains the caller's
    std::optional<std::vector<BusOption>> options;
};

/// What came back for a call.
struct BusReply {
    bool isText = false;   ///< a plain answer of the signature "s"
    bool isPath = false;   ///< a plain answer of the signature "o", which is in `text` then
    std::string errorName; ///< empty for a plain answer
    /// Of an answer or an error, where it has one that can be read: the library refuses
    /// noncharacters.
    std::optional<std::string> text;
    bool isFromBus = false; ///< the bus answered in place of the owner
};

/// A connection to a bus of its own. One thread at a time.
class MessageBus {
public:
    using Deadline = std::chrono::steady_clock::time_point;
    /// There is no bus, or it is gone; for people.
    struct Unreachable {
        std::string reason;
    };
    struct TimedOut {};

    /// Connects to the user's session and waits until the bus has accepted the connection, or until
    /// `deadline`; only the name of a computer in the address, which nobody uses, may take the time
    /// it takes.
    [[nodiscard]] static std::variant<MessageBus, Unreachable> connectToSession(Deadline deadline);

    /// Connects in the same way to the bus of the whole system.
    [[nodiscard]] static std::variant<MessageBus, Unreachable> connectToSystem(Deadline deadline);

    /// Calls and waits for the reply. Where the destination is a connection (":1.7"), only that one
    /// and the bus can reply.
    [[nodiscard]] std::variant<BusReply, TimedOut, Unreachable> call(const BusCall& call,
                                                                     Deadline deadline);

    /// Calls and does not wait. The bus drops a call whose caller leaves before the destination
    /// was started; whoever keeps `descriptor` open has not left.
    /// Answers whether the call was sent.
    bool post(const BusCall& call);

    /// Asks the bus which connection has `name`: the answer's text. A connection has its own name
    /// as long as it is there.
    [[nodiscard]] std::variant<BusReply, TimedOut, Unreachable> ownerOf(const std::string& name,
                                                                        Deadline deadline);

    /// The connection's socket, or -1. Valid as long as this object.
    [[nodiscard]] int descriptor() const;

private:
    struct Close {
        void operator()(sd_bus* open) const;
    };
    using Connection = std::unique_ptr<sd_bus, Close>;

    explicit MessageBus(Connection open)
        : m_connection(std::move(open)) {}

    using Opener = int (*)(sd_bus**);
    [[nodiscard]] static std::variant<MessageBus, Unreachable> connect(Opener opener,
                                                                       Deadline deadline);

    Connection m_connection;
};

/// The object path that belongs to a reverse-DNS name: "/org/example/Files" for
/// "org.example.Files".
[[nodiscard]] std::string objectPathForName(std::string_view name);

/// What the environment knows of the user's request, by which the desktop lets the application
/// come to the front: "activation-token", where there is one.
[[nodiscard]] std::vector<BusOption> activationOptions();

} // namespace platform
