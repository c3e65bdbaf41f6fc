// SPDX-License-Identifier: Apache-2.0
#include "platform/ScriptRunner.h"

#include "platform/Format.h"
#include "platform/linux/MessageBus.h"
#include "platform/linux/Utf8.h"

#include <algorithm>
#include <array>
#include <span>
#include <utility>

namespace platform::ScriptRunner {
namespace {

using Result = std::variant<BusReply, MessageBus::TimedOut, MessageBus::Unreachable>;

constexpr std::chrono::seconds timeout{25};

// Error names that D-Bus defines. From the bus: nobody has the name.
constexpr std::array<std::string_view, 2> absences{
    "org.freedesktop.DBus.Error.ServiceUnknown",
    "org.freedesktop.DBus.Error.NameHasNoOwner",
};
// From the bus: the owner went away, or took longer than the bus allows.
constexpr std::string_view noReply = "org.freedesktop.DBus.Error.NoReply";
// From the application: there is nothing at the place that scripts are sent to.
constexpr std::array<std::string_view, 3> refusals{
    "org.freedesktop.DBus.Error.UnknownObject",
    "org.freedesktop.DBus.Error.UnknownInterface",
    "org.freedesktop.DBus.Error.UnknownMethod",
};

bool isAmong(const auto& names, std::string_view name) {
    return std::ranges::find(names, name) != names.end();
}

BusCall callFor(const std::string& application, const std::string& source) {
    BusCall call;
    call.destination = application;
    call.path = objectPathForName(application);
    call.interface = application + ".Scripting1";
    call.member = "RunScript";
    call.text = source;
    auto options = activationOptions();
    if (!isUTF8(source)) {
        const auto bytes = std::as_bytes(std::span(source));
        call.text = replacingInvalidUTF8(source);
        options.emplace_back("source-bytes", std::vector(bytes.begin(), bytes.end()));
    }
    call.options = std::move(options);
    return call;
}

bool isNoReplyOfBus(const Result& result) {
    const auto* reply = std::get_if<BusReply>(&result);
    return reply != nullptr && reply->isFromBus && reply->errorName == noReply;
}

bool isPlainText(const Result& result) {
    const auto* reply = std::get_if<BusReply>(&result);
    return reply != nullptr && reply->isText;
}

// Calls whoever has the name now, so that only that one can answer.
Result send(BusCall call, MessageBus& bus, MessageBus::Deadline deadline) {
    Result owner = bus.ownerOf(call.destination, deadline);
    if (!isPlainText(owner)) {
        return owner;
    }
    call.destination = std::get<BusReply>(owner).text.value_or("");
    Result result = bus.call(call, deadline);
    // The bus says the same of one who left and of one who took longer than it allows.
    if (isNoReplyOfBus(result) && isPlainText(bus.ownerOf(call.destination, deadline))) {
        return MessageBus::TimedOut{};
    }
    return result;
}

Result send(BusCall call) {
    const auto deadline = std::chrono::steady_clock::now() + timeout;
    auto bus = MessageBus::connectToSession(deadline);
    if (auto* unreachable = std::get_if<MessageBus::Unreachable>(&bus)) {
        return std::move(*unreachable);
    }
    return send(std::move(call), std::get<MessageBus>(bus), deadline);
}

std::optional<Failure> failureIn(const BusReply& reply, const std::string& application) {
    if (reply.isText) {
        return std::nullopt;
    }
    if (reply.errorName.empty()) {
        return Failure{format("{} did not answer with a text", application)};
    }
    if (reply.isFromBus && (isAmong(absences, reply.errorName) || reply.errorName == noReply)) {
        return Failure{format("{} is not running", application)};
    }
    if (!reply.isFromBus && isAmong(refusals, reply.errorName)) {
        return Failure{format("{} does not accept scripts", application)};
    }
    // An empty text tells as much as none.
    return Failure{reply.text && !reply.text->empty() ? reply.text : std::nullopt};
}

} // namespace

std::optional<Failure> run(const std::string& application, const std::string& source) {
    const Result result = send(callFor(application, source));
    if (const auto* reply = std::get_if<BusReply>(&result)) {
        return failureIn(*reply, application);
    }
    if (const auto* unreachable = std::get_if<MessageBus::Unreachable>(&result)) {
        return Failure{format("Cannot connect to the session bus: {}", unreachable->reason)};
    }
    return Failure{format("{} did not answer", application)};
}

} // namespace platform::ScriptRunner
