// SPDX-License-Identifier: Apache-2.0
#include "platform/linux/hdiutil/Udisks.h"

#include "platform/linux/Descriptor.h"
#include "platform/linux/hdiutil/LoopTable.h"
#include "platform/linux/hdiutil/UdisksPaths.h"

#include <cerrno>
#include <initializer_list>
#include <string_view>
#include <thread>
#include <variant>
#include <vector>

#include <fcntl.h>

namespace platform::hdiutil {
namespace {

using Clock = std::chrono::steady_clock;

// A service that is only started by the call, and the probing of a slow disk, are in it.
constexpr std::chrono::seconds patience{30};
// A new device is probed before its file system is known to the service.
constexpr std::chrono::seconds probingTime{3};
constexpr std::chrono::milliseconds probingPause{25};

// The reference of udisks2, "D-Bus API".
constexpr std::string_view serviceName = "org.freedesktop.UDisks2";
constexpr std::string_view managerPath = "/org/freedesktop/UDisks2/Manager";
constexpr std::string_view managerInterface = "org.freedesktop.UDisks2.Manager";
constexpr std::string_view loopInterface = "org.freedesktop.UDisks2.Loop";
constexpr std::string_view fileSystemInterface = "org.freedesktop.UDisks2.Filesystem";

bool isPlain(const BusReply& reply) {
    return reply.errorName.empty();
}

void setErrno(const BusReply& reply) {
    const std::string_view name = reply.errorName;
    if (name.ends_with(".DeviceBusy")) {
        errno = EBUSY;
    } else if (name.find(".NotAuthorized") != std::string_view::npos) {
        errno = EPERM;
    } else if (name == "timeout") {
        errno = ETIMEDOUT;
    } else if (name == "unreachable" || name == "org.freedesktop.DBus.Error.ServiceUnknown") {
        errno = ENOTCONN;
    } else {
        errno = EIO;
    }
}

// Whether the service does not know yet what is on the device.
bool isUnknown(const BusReply& reply) {
    return reply.errorName == "org.freedesktop.DBus.Error.UnknownMethod" ||
           reply.errorName == "org.freedesktop.DBus.Error.UnknownInterface" ||
           reply.errorName == "org.freedesktop.DBus.Error.UnknownObject";
}

std::vector<BusOption> withoutQuestions() {
    return {{"auth.no_user_interaction", true}};
}

} // namespace

Udisks* Udisks::shared() {
    static auto connection = MessageBus::connectToSystem(Clock::now() + patience);
    static auto service = std::holds_alternative<MessageBus>(connection)
                              ? std::optional(Udisks(std::get<MessageBus>(std::move(connection))))
                              : std::nullopt;
    return service ? &*service : nullptr;
}

std::optional<std::string> Udisks::addLoop(const std::string& file, std::uint64_t offset,
                                           std::uint64_t length, bool isReadOnly) {
    const Descriptor opened(
        ::open(file.c_str(), (isReadOnly ? O_RDONLY : O_RDWR) | O_CLOEXEC | O_NOCTTY));
    if (opened.number() < 0) {
        return std::nullopt;
    }
    auto options = withoutQuestions();
    for (const BusOption& option : std::initializer_list<BusOption>{{"offset", offset},
                                                                    {"size", length},
                                                                    {"read-only", isReadOnly},
                                                                    {"no-part-scan", true}}) {
        options.push_back(option);
    }
    const BusReply reply = call(std::string(managerPath), managerInterface, "LoopSetup",
                                opened.number(), std::move(options));
    auto device = reply.isPath && reply.text ? loopDeviceOf(*reply.text) : std::nullopt;
    if (!device) {
        setErrno(reply);
    }
    return device;
}

bool Udisks::removeLoop(const std::string& device) {
    const BusReply reply = callForDevice(device, loopInterface, "Delete");
    setErrno(reply);
    return isPlain(reply);
}

std::optional<std::string> Udisks::mount(const std::string& device) {
    const auto deadline = Clock::now() + probingTime;
    BusReply reply = callForDevice(device, fileSystemInterface, "Mount");
    while (isUnknown(reply) && Clock::now() < deadline) {
        std::this_thread::sleep_for(probingPause);
        reply = callForDevice(device, fileSystemInterface, "Mount");
    }
    // A desktop may have mounted what has just come.
    std::string mountPoint = reply.errorName.ends_with(".AlreadyMounted")
                                 ? LoopTable::mountPointOf(device)
                             : reply.isText ? reply.text.value_or(std::string())
                                            : std::string();
    if (!mountPoint.starts_with('/')) {
        setErrno(reply);
        return std::nullopt;
    }
    return mountPoint;
}

bool Udisks::unmount(const std::string& device) {
    const BusReply reply = callForDevice(device, fileSystemInterface, "Unmount");
    setErrno(reply);
    return isPlain(reply) || reply.errorName.ends_with(".NotMounted") || isUnknown(reply);
}

BusReply Udisks::call(const std::string& path, std::string_view interface, std::string_view member,
                      std::optional<int> descriptor, std::vector<BusOption> options) {
    BusReply none;
    none.errorName = "timeout";
    if (m_isSilent) {
        return none;
    }
    auto result = m_bus.call({.destination = std::string(serviceName),
                              .path = path,
                              .interface = std::string(interface),
                              .member = std::string(member),
                              .startsDestination = true,
                              .text = std::nullopt,
                              .descriptor = descriptor,
                              .options = std::move(options)},
                             Clock::now() + patience);
    if (auto* reply = std::get_if<BusReply>(&result)) {
        return std::move(*reply);
    }
    // Whoever waits for a disk waits once, not for each volume.
    m_isSilent = std::holds_alternative<MessageBus::TimedOut>(result);
    if (!m_isSilent) {
        none.errorName = "unreachable";
    }
    return none;
}

BusReply Udisks::callForDevice(const std::string& device, std::string_view interface,
                               std::string_view member) {
    return call(objectPathOf(device), interface, member, std::nullopt, withoutQuestions());
}

} // namespace platform::hdiutil
