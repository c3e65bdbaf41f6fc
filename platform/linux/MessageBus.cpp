// SPDX-License-Identifier: Apache-2.0
#include "platform/linux/MessageBus.h"

#include "platform/linux/Environment.h"
#include "platform/linux/SdBus.h"
#include "platform/linux/Utf8.h"

#include <algorithm>
#include <cerrno>
#include <cstdint>
#include <cstring>
#include <thread>
#include <utility>

namespace platform {
namespace {

using Unreachable = MessageBus::Unreachable;
using Clock = std::chrono::steady_clock;

const char* const busName = "org.freedesktop.DBus";

// Only for connections, which exist only where the library was loaded.
const SdBus& bus() {
    return std::get<SdBus>(SdBus::load());
}

Unreachable unreachable(int negativeError) {
    // Never translated: the words decide what happens next.
    const char* const text = ::strerrordesc_np(-negativeError);
    return {text == nullptr ? "Unknown error" : text};
}

struct Unref {
    void operator()(sd_bus_message* message) const { bus().messageUnref(message); }
};
using Message = std::unique_ptr<sd_bus_message, Unref>;

// Handles what has arrived, or waits for it. Answers a negative error, ETIMEDOUT at the deadline.
int advance(sd_bus* connection, MessageBus::Deadline deadline, sd_bus_message** received) {
    const auto left =
        std::chrono::duration_cast<std::chrono::microseconds>(deadline - Clock::now()).count();
    if (left <= 0) {
        return -ETIMEDOUT;
    }
    const int handled = bus().process(connection, received);
    if (handled != 0) {
        return handled;
    }
    const int result = bus().wait(connection, static_cast<std::uint64_t>(left));
    return result == -EINTR ? 0 : result;
}

/// Writes the arguments of a call. After the first failure nothing more is written.
class Writer {
public:
    explicit Writer(sd_bus_message* target)
        : m_message(target) {}

    // Space is asked for because the library refuses characters that it does not think fit for
    // exchange (U+FFFE and the like), which the bus and file names allow.
    void text(const std::string& value) {
        char* space = nullptr;
        note(m_status < 0 ? m_status
                          : bus().messageAppendStringSpace(m_message, value.size(), &space));
        if (m_status >= 0) {
            std::ranges::copy(value, space);
        }
    }

    void descriptor(int value) { basic('h', &value); }

    void bytes(const std::vector<std::byte>& value) {
        note(m_status < 0 ? m_status
                          : bus().messageAppendArray(m_message, 'y', value.data(), value.size()));
    }

    void options(const std::vector<BusOption>& entries) {
        open('a', "{sv}");
        for (const BusOption& entry : entries) {
            open('e', "sv");
            text(entry.name);
            variant(entry.value);
            close();
        }
        close();
    }

    [[nodiscard]] int result() const { return m_status; }

private:
    void variant(const BusValue& value) {
        if (const auto* characters = std::get_if<std::string>(&value)) {
            open('v', "s");
            text(*characters);
        } else if (const auto* number = std::get_if<std::uint64_t>(&value)) {
            open('v', "t");
            basic('t', number);
        } else if (const auto* truth = std::get_if<bool>(&value)) {
            open('v', "b");
            const int asNumber = *truth ? 1 : 0;
            basic('b', &asNumber);
        } else {
            open('v', "ay");
            bytes(std::get<std::vector<std::byte>>(value));
        }
        close();
    }

    void basic(char type, const void* value) {
        note(m_status < 0 ? m_status : bus().messageAppendBasic(m_message, type, value));
    }

    void open(char type, const char* contents) {
        note(m_status < 0 ? m_status : bus().messageOpenContainer(m_message, type, contents));
    }
    void close() { note(m_status < 0 ? m_status : bus().messageCloseContainer(m_message)); }
    void note(int result) { m_status = std::min(m_status, result); }

    sd_bus_message* m_message;
    int m_status = 0;
};

// Sends the call. Answers the number that its reply will carry.
std::variant<std::uint64_t, Unreachable> send(sd_bus* connection, const BusCall& call) {
    sd_bus_message* created = nullptr;
    int result =
        bus().messageNewMethodCall(connection, &created, call.destination.c_str(),
                                   call.path.c_str(), call.interface.c_str(), call.member.c_str());
    const Message message(created);
    if (result >= 0) {
        result = bus().messageSetAutoStart(created, call.startsDestination ? 1 : 0);
    }
    if (result >= 0) {
        Writer writer(created);
        if (call.text) {
            writer.text(*call.text);
        }
        if (call.descriptor) {
            writer.descriptor(*call.descriptor);
        }
        if (call.options) {
            writer.options(*call.options);
        }
        result = writer.result();
    }
    std::uint64_t cookie = 0;
    if (result >= 0) {
        result = bus().send(connection, created, &cookie);
    }
    if (result < 0) {
        return unreachable(result);
    }
    return cookie;
}

std::string_view senderOf(sd_bus_message* message) {
    const char* const sender = bus().messageGetSender(message);
    return sender == nullptr ? std::string_view() : sender;
}

std::optional<std::string> readText(sd_bus_message* message, char type) {
    const char* text = nullptr;
    if (bus().messageReadBasic(message, type, static_cast<void*>(&text)) <= 0) {
        return std::nullopt;
    }
    return text;
}

BusReply readReply(sd_bus_message* message) {
    BusReply reply;
    reply.isFromBus = senderOf(message) == busName;
    const sd_bus_error* const error = bus().messageGetError(message);
    if (error == nullptr || error->name == nullptr) {
        reply.isText = bus().messageHasSignature(message, "s") > 0;
        reply.isPath = bus().messageHasSignature(message, "o") > 0;
        if (reply.isText || reply.isPath) {
            reply.text = readText(message, reply.isText ? 's' : 'o');
        }
        return reply;
    }
    reply.errorName = error->name;
    if (error->message != nullptr) {
        reply.text = error->message;
    }
    return reply;
}

// Whether `message` is the reply to the call with the number `cookie`, from one who may give it.
bool answers(sd_bus_message* message, std::uint64_t cookie, std::string_view destination) {
    std::uint64_t answered = 0;
    if (message == nullptr || bus().messageGetReplyCookie(message, &answered) < 0 ||
        answered != cookie) {
        return false;
    }
    const std::string_view sender = senderOf(message);
    return !destination.starts_with(':') || sender == destination || sender == busName;
}

// Whoever calls this process gets an answer too: there is nothing here.
void refuseCall(sd_bus_message* message) {
    if (message != nullptr && bus().messageIsMethodCall(message, nullptr, nullptr) > 0) {
        const sd_bus_error error{"org.freedesktop.DBus.Error.UnknownObject",
                                 "This connection exports no objects", 0};
        bus().replyMethodError(message, &error);
    }
}

// A bus that has too many guests at its door is asked again.
int open(int (*opener)(sd_bus**), sd_bus*& opened, MessageBus::Deadline deadline) {
    constexpr std::chrono::milliseconds pause{20};
    int result = opener(&opened);
    while (result == -EAGAIN && Clock::now() + pause < deadline) {
        std::this_thread::sleep_for(pause);
        result = opener(&opened);
    }
    return result;
}

Unreachable notThere(int negativeError) {
    if (negativeError == -ENOMEDIUM) {
        return {"neither DBUS_SESSION_BUS_ADDRESS nor XDG_RUNTIME_DIR is set"};
    }
    return unreachable(negativeError);
}

} // namespace

void MessageBus::Close::operator()(sd_bus* open) const {
    bus().closeUnref(open);
}

std::variant<MessageBus, Unreachable> MessageBus::connectToSession(Deadline deadline) {
    if (const auto* reason = std::get_if<std::string>(&SdBus::load())) {
        return Unreachable{*reason};
    }
    if (isSetButEmpty("DBUS_SESSION_BUS_ADDRESS")) {
        return Unreachable{"DBUS_SESSION_BUS_ADDRESS is empty"};
    }
    return connect(bus().openUser, deadline);
}

std::variant<MessageBus, Unreachable> MessageBus::connectToSystem(Deadline deadline) {
    if (const auto* reason = std::get_if<std::string>(&SdBus::load())) {
        return Unreachable{*reason};
    }
    return connect(bus().openSystem, deadline);
}

std::variant<MessageBus, Unreachable> MessageBus::connect(Opener opener, Deadline deadline) {
    sd_bus* opened = nullptr;
    int result = open(opener, opened, deadline);
    Connection connection(opened);
    while (result >= 0) {
        const int ready = bus().isReady(opened);
        if (ready > 0) {
            return MessageBus(std::move(connection));
        }
        result = ready < 0 ? ready : advance(opened, deadline, nullptr);
    }
    return notThere(result);
}

std::variant<BusReply, MessageBus::TimedOut, Unreachable> MessageBus::call(const BusCall& call,
                                                                           Deadline deadline) {
    const auto sent = send(m_connection.get(), call);
    if (const auto* failure = std::get_if<Unreachable>(&sent)) {
        return *failure;
    }
    const std::uint64_t cookie = std::get<std::uint64_t>(sent);
    int result = 0;
    while (result >= 0) {
        sd_bus_message* received = nullptr;
        result = advance(m_connection.get(), deadline, &received);
        const Message message(received);
        if (answers(received, cookie, call.destination)) {
            return readReply(received);
        }
        refuseCall(received);
    }
    if (result == -ETIMEDOUT) {
        return TimedOut{};
    }
    return unreachable(result);
}

bool MessageBus::post(const BusCall& call) {
    return std::holds_alternative<std::uint64_t>(send(m_connection.get(), call));
}

std::variant<BusReply, MessageBus::TimedOut, Unreachable>
MessageBus::ownerOf(const std::string& name, Deadline deadline) {
    return call({.destination = busName,
                 .path = "/org/freedesktop/DBus",
                 .interface = busName,
                 .member = "GetNameOwner",
                 .text = name,
                 .descriptor = std::nullopt,
                 .options = std::nullopt},
                deadline);
}

int MessageBus::descriptor() const {
    return std::max(bus().getFd(m_connection.get()), -1);
}

std::string objectPathForName(std::string_view name) {
    std::string path(1, '/');
    path.append(name);
    std::ranges::replace(path, '.', '/');
    return path;
}

std::vector<BusOption> activationOptions() {
    for (const char* const name : {"XDG_ACTIVATION_TOKEN", "DESKTOP_STARTUP_ID"}) {
        const std::string_view token = environmentVariable(name);
        if (!token.empty() && isUTF8(token)) {
            return {{"activation-token", std::string(token)}};
        }
    }
    return {};
}

} // namespace platform
