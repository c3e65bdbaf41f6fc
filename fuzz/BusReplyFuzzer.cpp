// SPDX-License-Identifier: Apache-2.0
// Lets bytes be what comes from the session bus while a script is handed to the application.
//
// The input is a sequence of messages, each a byte of choices (bits 0 and 1: the type; 2 and 3: the
// sender; 4 and 5: which call is answered; 6: the body is one text, of the type that the signature
// says; 7: the body is all that is sent), then the name, the signature and the body behind their
// lengths in one byte, for the body two, least significant first.
#include "fuzz/BusMessages.h"
#include "fuzz/StandInBus.h"
#include "platform/ScriptRunner.h"
#include "platform/linux/MessageBus.h"
#include "platform/linux/Utf8.h"

#include <algorithm>
#include <array>
#include <chrono>

namespace {

using fuzzing::BusMessage;
using fuzzing::require;
using platform::BusReply;
using platform::MessageBus;

using Messages = std::vector<BusMessage>;

constexpr const char* busName = "org.freedesktop.DBus";
constexpr const char* owner = ":1.7";
// The first call is the greeting, which is answered anyway.
constexpr std::uint32_t firstCall = 2;
constexpr std::uint32_t secondCall = 3;

/// What a bus sends, and the messages in it that are known to be some.
struct Sent {
    std::string bytes;
    Messages messages;
    bool isRaw = false; ///< there may be others
};

BusMessage messageIn(unsigned choices, fuzzing::Input& input) {
    static const std::array<const char*, 4> senders{"", busName, owner, ":1.8"};
    BusMessage message;
    message.type = static_cast<BusMessage::Type>(1 + (choices & 3U));
    message.sender = senders.at(choices >> 2U & 3U);
    message.answered = choices >> 4U & 3U;
    message.answered += message.answered == 0 ? 0 : 1;
    message.name = input.text(1);
    message.signature = input.text(1);
    message.body = input.text(2);
    if ((choices & 64U) != 0) {
        message.setText(message.signature, message.body);
    }
    return message;
}

std::string greeting() {
    BusMessage welcome;
    welcome.sender = busName;
    welcome.answered = 1;
    welcome.setText("s", ":1.9");
    return "DATA\r\nOK 0123456789abcdef0123456789abcdef\r\nAGREE_UNIX_FD\r\n" +
           welcome.marshalled();
}

Sent sentIn(fuzzing::Input input) {
    Sent sent;
    sent.bytes = greeting();
    while (!input.isEmpty()) {
        const auto choices = static_cast<unsigned>(input.number(1));
        const BusMessage message = messageIn(choices, input);
        const bool isRaw = (choices & 128U) != 0;
        sent.bytes.append(isRaw ? message.body : message.marshalled());
        sent.isRaw = sent.isRaw || isRaw;
        sent.messages.push_back(message);
    }
    return sent;
}

bool isAnswer(const BusMessage& message, std::uint32_t call) {
    return message.answered == call &&
           (message.type == BusMessage::Type::reply || message.type == BusMessage::Type::error);
}

void checkText(const std::string& text) {
    require(platform::isUTF8(text) && text.find('\0') == std::string::npos);
}

// Whether one of the messages is an answer that can have become the reply.
bool isAmong(const Messages& messages, const BusReply& reply) {
    return std::ranges::any_of(messages, [&reply](const BusMessage& message) {
        return isAnswer(message, firstCall) && reply.isFromBus == (message.sender == busName) &&
               reply.isText == (reply.errorName.empty() && message.signature == "s") &&
               (message.sender == busName || message.sender == owner) &&
               (reply.errorName.empty() || reply.errorName == message.name);
    });
}

void checkReply(const Sent& sent) {
    // Nobody has to wait: whoever is told nothing is told that at once.
    const auto deadline = std::chrono::steady_clock::now() + std::chrono::minutes(1);
    auto bus = MessageBus::connectToSession(deadline);
    require(std::holds_alternative<MessageBus>(bus));
    const auto result = std::get<MessageBus>(bus).call({.destination = owner,
                                                        .path = "/",
                                                        .interface = "org.example.Interface",
                                                        .member = "Method",
                                                        .text = std::nullopt,
                                                        .descriptor = std::nullopt,
                                                        .options = std::nullopt},
                                                       deadline);
    require(!std::holds_alternative<MessageBus::TimedOut>(result));
    const auto* const reply = std::get_if<BusReply>(&result);
    if (reply == nullptr) {
        return;
    }
    require(!reply->isText || !reply->isPath);
    require(reply->errorName.empty() || (!reply->isText && !reply->isPath));
    require(reply->isText || reply->isPath || !reply->errorName.empty() || !reply->text);
    checkText(reply->text.value_or(""));
    require(!reply->isPath || !reply->text || reply->text->starts_with('/'));
    require(sent.isRaw || isAmong(sent.messages, *reply));
}

// A script has arrived when somebody says so, whose name the bus has told.
bool canHaveArrived(const Messages& messages) {
    return std::ranges::any_of(messages, [&messages](const BusMessage& message) {
        return message.type == BusMessage::Type::reply && message.answered == secondCall &&
               message.signature == "s" &&
               std::ranges::any_of(messages, [](const BusMessage& name) {
                   return name.type == BusMessage::Type::reply && name.answered == firstCall &&
                          name.signature == "s";
               });
    });
}

void checkScript(const Sent& sent) {
    const auto failure = platform::ScriptRunner::run("org.example.Files", "1");
    if (!failure) {
        require(sent.isRaw || canHaveArrived(sent.messages));
    } else if (failure->message) {
        require(!failure->message->empty());
        checkText(*failure->message);
    }
}

fuzzing::StandInBus& standInBus() {
    static auto& bus = *new fuzzing::StandInBus();
    return bus;
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    static const bool isSet =
        ::setenv("DBUS_SESSION_BUS_ADDRESS", standInBus().address().c_str(), 1) == 0;
    require(isSet);
    const Sent sent = sentIn({data, size});
    standInBus().say(sent.bytes);
    checkReply(sent);
    checkScript(sent);
    return 0;
}
