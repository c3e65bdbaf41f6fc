// SPDX-License-Identifier: Apache-2.0
#include "platform/linux/worker/WorkerLoop.h"

#include "platform/linux/Descriptor.h"
#include "platform/linux/worker/Confinement.h"

#include <array>
#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <span>

#include <sys/socket.h>

namespace platform::worker {
namespace {

using Outcome = MediaAnswer::Outcome;

struct Received {
    MediaRequest request;
    Descriptor file;
};

// The one descriptor that comes with a message; -1 when there is none or another number of them.
Descriptor descriptorOf(msghdr& message) {
    const cmsghdr* const header = CMSG_FIRSTHDR(&message);
    if (header == nullptr || header->cmsg_level != SOL_SOCKET || header->cmsg_type != SCM_RIGHTS ||
        header->cmsg_len != CMSG_LEN(sizeof(int)) || (message.msg_flags & MSG_CTRUNC) != 0) {
        return {};
    }
    int descriptor = -1;
    std::memcpy(&descriptor, CMSG_DATA(header), sizeof descriptor);
    return Descriptor(descriptor);
}

// nullopt when nobody is left, or somebody who does not keep to the protocol.
std::optional<Received> receive() {
    MessageHead head{};
    iovec part{head.data(), head.size()};
    alignas(cmsghdr) std::array<char, CMSG_SPACE(sizeof(int))> space{};
    msghdr message{};
    message.msg_iov = &part;
    message.msg_iovlen = 1;
    message.msg_control = space.data();
    message.msg_controllen = space.size();
    ssize_t size = -1;
    do {
        size = ::recvmsg(requestSocket, &message, MSG_CMSG_CLOEXEC);
    } while (size < 0 && errno == EINTR);
    if (size <= 0 || (message.msg_flags & MSG_TRUNC) != 0) {
        return std::nullopt;
    }
    Received received;
    received.file = descriptorOf(message);
    const auto request = decodedRequest(DataView(head).first(static_cast<std::size_t>(size)));
    if (!request || received.file.number() < 0) {
        return std::nullopt;
    }
    received.request = *request;
    return received;
}

bool send(Outcome outcome, std::uint64_t number, DataView value) {
    MessageHead head = encodedAnswerHead(outcome, number);
    Data copy(value.begin(), value.end()); // the call takes no constant bytes
    std::array<iovec, 2> parts{{{head.data(), head.size()}, {copy.data(), copy.size()}}};
    msghdr message{};
    message.msg_iov = parts.data();
    message.msg_iovlen = parts.size();
    ssize_t sent = -1;
    do {
        sent = ::sendmsg(requestSocket, &message, MSG_NOSIGNAL);
    } while (sent < 0 && errno == EINTR);
    return sent >= 0;
}

bool answer(const MediaHandler& handler, const Received& received) {
    std::optional<Data> value;
    try {
        value = handler(received.request, received.file.number());
    } catch (...) {
        value.reset(); // what the libraries throw says no more than that they cannot read it
    }
    const bool hasValue =
        value && !value->empty() && value->size() <= maximumMessageSize - messageHeadSize;
    return send(hasValue ? Outcome::value : Outcome::nothing, received.request.number,
                hasValue ? DataView(*value) : DataView());
}

} // namespace

int serveMedia(const MediaHandler& handler) {
    if (!endWith(lifelineSocket) || !confine(requestSocket, lifelineSocket) ||
        !send(Outcome::ready, 0, {})) {
        return EXIT_FAILURE;
    }
    while (const auto received = receive()) {
        if (!answer(handler, *received)) {
            break;
        }
    }
    return EXIT_SUCCESS;
}

} // namespace platform::worker
