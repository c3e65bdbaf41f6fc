// SPDX-License-Identifier: Apache-2.0
#include "platform/linux/worker/WorkerProcess.h"

#include "platform/linux/Spawn.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstring>
#include <optional>
#include <utility>

#include <sys/socket.h>
#include <sys/time.h>

namespace platform::worker {
namespace {

using namespace std::chrono_literals;

/// Room for one item that comes with a message, aligned as the kernel wants it.
template <class Item>
union AncillaryData {
    cmsghdr header;
    std::array<char, CMSG_SPACE(sizeof(Item))> space;
};

void setOption(int socket, int option, int value) {
    ::setsockopt(socket, SOL_SOCKET, option, &value, sizeof value);
}

// The process that sent a message, as the kernel tells it.
std::optional<pid_t> senderOf(msghdr& message) {
    const cmsghdr* const header = CMSG_FIRSTHDR(&message);
    if (header == nullptr || header->cmsg_level != SOL_SOCKET ||
        header->cmsg_type != SCM_CREDENTIALS || header->cmsg_len != CMSG_LEN(sizeof(ucred))) {
        return std::nullopt;
    }
    ucred sender{};
    std::memcpy(&sender, CMSG_DATA(header), sizeof sender);
    return sender.pid;
}

} // namespace

WorkerProcess::SocketPair WorkerProcess::socketPair() {
    std::array<int, 2> ends{-1, -1};
    if (::socketpair(AF_UNIX, SOCK_SEQPACKET | SOCK_CLOEXEC, 0, ends.data()) != 0) {
        return {};
    }
    return {aboveStandardStreams(Descriptor(ends[0])), aboveStandardStreams(Descriptor(ends[1]))};
}

std::unique_ptr<WorkerProcess> WorkerProcess::create(const TimeLimits& limits) {
    std::unique_ptr<WorkerProcess> process(new WorkerProcess(socketPair(), socketPair(), limits));
    for (const SocketPair* pair : {&process->m_requests, &process->m_lifeline}) {
        if (pair->own.number() < 0 || pair->other.number() < 0) {
            return nullptr;
        }
    }
    return process;
}

WorkerProcess::WorkerProcess(SocketPair requests, SocketPair lifeline, const TimeLimits& limits)
    : m_requests(std::move(requests))
    , m_lifeline(std::move(lifeline))
    , m_limits(limits)
    // A byte more than there may be, so that a longer message is seen.
    , m_message(maximumMessageSize + 1) {}

// Closing is not enough where a copy of this process has the same ends.
WorkerProcess::~WorkerProcess() {
    if (m_lifeline.own.number() >= 0) {
        ::shutdown(m_lifeline.own.number(), SHUT_RDWR);
        ::shutdown(m_requests.own.number(), SHUT_RDWR);
    }
}

void WorkerProcess::abandon() {
    m_lifeline = {};
    m_requests = {};
}

void WorkerProcess::start(const std::string& program) {
    setOption(socket(), SO_PASSCRED, 1);
    SpawnRequest request;
    request.program = program;
    request.command.push_back(program);
    request.streams = {m_requests.other.number(), m_lifeline.other.number(),
                       SpawnRequest::nullDevice};
    request.workingDirectory.push_back('/'); // no disk is kept from being unmounted
    request.startsSession = true;
    spawnDetached(request);
}

void WorkerProcess::releaseOtherEnds() {
    m_requests.other = Descriptor();
    m_lifeline.other = Descriptor();
}

bool WorkerProcess::becomesReady() {
    const auto limit = Clock::now() + m_limits.starting;
    wakeEvery(m_limits.starting);
    AncillaryData<ucred> ancillary{};
    iovec part{m_message.data(), m_message.size()};
    ssize_t size = -1;
    std::optional<pid_t> sender;
    while (size < 0 && Clock::now() < limit) {
        msghdr message{};
        message.msg_iov = &part;
        message.msg_iovlen = 1;
        message.msg_control = &ancillary;
        message.msg_controllen = sizeof ancillary;
        size = ::recvmsg(socket(), &message, MSG_CMSG_CLOEXEC);
        sender = size > 0 ? senderOf(message) : std::nullopt;
        if (size < 0 && errno != EAGAIN && errno != EINTR) {
            return false;
        }
    }
    const auto answer =
        size > 0 ? decodedAnswer(DataView(m_message).first(static_cast<std::size_t>(size)))
                 : std::nullopt;
    if (!answer || answer->outcome != MediaAnswer::Outcome::ready || !sender ||
        ::clock_getcpuclockid(*sender, &m_processorClock) != 0) {
        return false;
    }
    setOption(socket(), SO_PASSCRED, 0);
    wakeEvery(std::min(m_limits.processor, m_limits.wall));
    return true;
}

WorkerProcess::Reply WorkerProcess::ask(MediaRequest request, int descriptor) {
    request.number = ++m_requestCount;
    const Deadline deadline{Clock::now() + m_limits.wall, usedProcessorTime() + m_limits.processor};
    if (!sendRequest(request, descriptor)) {
        return {Reply::Kind::notSent, {}};
    }
    return receive(request, deadline);
}

bool WorkerProcess::sendRequest(const MediaRequest& request, int descriptor) const {
    MessageHead head = encodedRequest(request);
    iovec part{head.data(), head.size()};
    AncillaryData<int> ancillary{};
    ancillary.header.cmsg_level = SOL_SOCKET;
    ancillary.header.cmsg_type = SCM_RIGHTS;
    ancillary.header.cmsg_len = CMSG_LEN(sizeof descriptor);
    std::memcpy(CMSG_DATA(&ancillary.header), &descriptor, sizeof descriptor);
    msghdr message{};
    message.msg_iov = &part;
    message.msg_iovlen = 1;
    message.msg_control = &ancillary;
    message.msg_controllen = sizeof ancillary;
    // Nothing else is under way, so there is room, unless the process is not what it should be.
    return ::sendmsg(socket(), &message, MSG_NOSIGNAL | MSG_DONTWAIT) ==
           static_cast<ssize_t>(head.size());
}

WorkerProcess::Reply WorkerProcess::receive(const MediaRequest& request, const Deadline& deadline) {
    while (true) {
        // Without room for them, descriptors that come along are closed by the kernel.
        const ssize_t size = ::recv(socket(), m_message.data(), m_message.size(), 0);
        if (size > 0) {
            return replyTo(request, static_cast<std::size_t>(size));
        }
        if (size == 0 || (errno != EAGAIN && errno != EINTR)) {
            return {Reply::Kind::ended, {}};
        }
        if (isOver(deadline)) {
            return {Reply::Kind::late, {}};
        }
    }
}

WorkerProcess::Reply WorkerProcess::replyTo(const MediaRequest& request, std::size_t size) const {
    const auto answer = decodedAnswer(DataView(m_message).first(size));
    if (!answer || answer->number != request.number ||
        answer->outcome == MediaAnswer::Outcome::ready) {
        return {Reply::Kind::nonsense, {}};
    }
    const bool hasValue = answer->outcome == MediaAnswer::Outcome::value;
    return {hasValue ? Reply::Kind::value : Reply::Kind::nothing, answer->value};
}

bool WorkerProcess::isOver(const Deadline& deadline) const {
    return Clock::now() >= deadline.wall || usedProcessorTime() >= deadline.processor;
}

// What one process uses is known to all others, so it need not be trusted to say it.
std::chrono::nanoseconds WorkerProcess::usedProcessorTime() const {
    timespec used{};
    if (::clock_gettime(m_processorClock, &used) != 0) {
        return 0ns;
    }
    return std::chrono::seconds(used.tv_sec) + std::chrono::nanoseconds(used.tv_nsec);
}

// How often a wait is interrupted to look at the limits.
void WorkerProcess::wakeEvery(std::chrono::milliseconds limit) const {
    constexpr int looks = 10;
    const std::chrono::microseconds interval =
        std::clamp<std::chrono::milliseconds>(limit / looks, 1ms, 1000ms);
    const timeval value{interval / 1s, interval % 1s / 1us};
    ::setsockopt(socket(), SOL_SOCKET, SO_RCVTIMEO, &value, sizeof value);
}

} // namespace platform::worker
