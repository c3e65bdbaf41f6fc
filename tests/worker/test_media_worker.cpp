// SPDX-License-Identifier: Apache-2.0
// A process for media, confined as the real one is, whose handler finds in the file what to do: a
// word and an argument. "width 7" is an image of that width; the other words are what a library
// that was taken over by a hostile file could do.
#include "platform/linux/worker/Confinement.h"
#include "platform/linux/worker/ImageAnswer.h"
#include "platform/linux/worker/WorkerLoop.h"

#include <array>
#include <cerrno>
#include <chrono>
#include <csignal>
#include <cstdlib>
#include <cstring>
#include <ctime>
#include <functional>
#include <map>
#include <memory>
#include <sstream>
#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

#include <fcntl.h>
#include <unistd.h>

#include <sys/ioctl.h>
#include <sys/mman.h>
#include <sys/prctl.h>
#include <sys/socket.h>
#include <sys/syscall.h>

namespace {

using platform::Data;
using platform::DataView;
using platform::ImageProperties;
using platform::worker::MediaAnswer;
using platform::worker::MediaRequest;

const pid_t self = ::getpid(); // it cannot be asked for later

/// What the handler was called with.
struct Job {
    MediaRequest request;
    int descriptor;
    std::string argument;
};

using Answer = std::optional<ImageProperties>;

Answer imageOfWidth(std::int64_t width) {
    ImageProperties properties;
    properties.pixelWidth = width;
    return properties;
}

Answer width(const Job& job) {
    auto properties = imageOfWidth(std::stoll(job.argument));
    if (job.request.wantsImageCount) {
        properties->imageCount = 2;
    }
    return properties;
}

// How a system call went: 0, or the error's number.
Answer outcome(long result) {
    return imageOfWidth(result >= 0 ? 0 : errno);
}

// Past the functions of the C library, which may have ways round a call that is refused.
template <class... Arguments>
Answer call(long number, Arguments... arguments) {
    return outcome(::syscall(number, arguments...));
}

Answer crash(const Job& /*job*/) {
    static_cast<void>(std::signal(SIGSEGV, SIG_DFL)); // not the sanitizers' own
    volatile int* volatile nowhere = nullptr;
    *nowhere = 1;
    return std::nullopt;
}

bool isPoisoned = false;

// Answers rightly, and leaves damage behind.
Answer poison(const Job& /*job*/) {
    isPoisoned = true;
    return imageOfWidth(1);
}

Answer loop(const Job& /*job*/) {
    volatile unsigned turns = 0;
    while (true) {
        turns = turns + 1;
    }
}

// Uses the processor for that many microseconds, as reading a file does.
Answer work(const Job& job) {
    const auto used = [] {
        timespec time{};
        ::clock_gettime(CLOCK_PROCESS_CPUTIME_ID, &time);
        return std::chrono::seconds(time.tv_sec) + std::chrono::nanoseconds(time.tv_nsec);
    };
    const auto end = used() + std::chrono::microseconds(std::stoi(job.argument));
    while (used() < end) {
    }
    return imageOfWidth(1);
}

// Waits for what never comes, without using the processor.
Answer wait(const Job& /*job*/) {
    char byte = 0;
    iovec part{&byte, 1};
    msghdr message{};
    message.msg_iov = &part;
    message.msg_iovlen = 1;
    ::recvmsg(platform::worker::requestSocket, &message, 0);
    return std::nullopt;
}

Answer memory(const Job& /*job*/) {
    constexpr std::size_t piece = std::size_t{16} * 1024 * 1024;
    std::vector<std::unique_ptr<char[]>> pieces;
    while (true) {
        pieces.push_back(std::make_unique<char[]>(piece));
    }
}

// What the memory holds that can be had, in MiB.
Answer room(const Job& /*job*/) {
    constexpr std::size_t mebibyte = std::size_t{1024} * 1024;
    std::int64_t count = 0;
    while (::mmap(nullptr, mebibyte, PROT_READ, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0) != MAP_FAILED) {
        ++count;
    }
    return imageOfWidth(count);
}

constexpr std::size_t pageSize = 4096;

void* page(int protection) {
    return ::mmap(nullptr, pageSize, protection, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
}

Answer code(const Job& /*job*/) {
    return outcome(page(PROT_READ | PROT_WRITE | PROT_EXEC) == MAP_FAILED ? -1 : 0);
}

// Code out of what was none.
Answer laterCode(const Job& /*job*/) {
    return call(SYS_mprotect, page(PROT_READ | PROT_WRITE), pageSize, PROT_READ | PROT_EXEC);
}

// Memory that is compared with that of other processes.
Answer mergedMemory(const Job& /*job*/) {
    return call(SYS_madvise, page(PROT_READ | PROT_WRITE), pageSize, MADV_MERGEABLE);
}

// The kernel looks at the lower half alone of what stands for a descriptor.
Answer closeByAnotherNumber(int descriptor) {
    constexpr unsigned half = 32;
    return call(SYS_close, (1UL << half) | static_cast<unsigned>(descriptor));
}

void sendMessage(DataView head, DataView value) {
    Data message(head.begin(), head.end());
    message.insert(message.end(), value.begin(), value.end());
    iovec part{message.data(), message.size()};
    msghdr header{};
    header.msg_iov = &part;
    header.msg_iovlen = 1;
    ::sendmsg(platform::worker::requestSocket, &header, MSG_NOSIGNAL);
}

void sendAnswer(std::uint64_t number, DataView value) {
    const auto head = platform::worker::encodedAnswerHead(MediaAnswer::Outcome::value, number);
    sendMessage(head, value);
}

Answer garbage(const Job& job) {
    sendMessage({}, platform::bytesOf(job.argument));
    return std::nullopt;
}

Answer half(const Job& job) {
    const auto head =
        platform::worker::encodedAnswerHead(MediaAnswer::Outcome::value, job.request.number);
    sendMessage(DataView(head).first(head.size() / 2), {});
    return std::nullopt;
}

// What is said to no request, and without a value.
Answer ready(const Job& job) {
    sendMessage(
        platform::worker::encodedAnswerHead(MediaAnswer::Outcome::ready, job.request.number), {});
    return std::nullopt;
}

Answer huge(const Job& job) {
    sendAnswer(job.request.number, Data(platform::worker::maximumMessageSize));
    return std::nullopt;
}

// An answer of the right form with the argument for its value.
Answer value(const Job& job) {
    sendAnswer(job.request.number, platform::bytesOf(job.argument));
    return std::nullopt;
}

// An answer to those alone who want less than all.
Answer valueOfLess(const Job& job) {
    return job.request.wantsText ? std::nullopt : value(job);
}

// One answer too many: it comes before the one to the next request.
Answer twice(const Job& job) {
    sendAnswer(job.request.number, platform::worker::encodedImageProperties(*imageOfWidth(1)));
    return imageOfWidth(1);
}

Answer wrongNumber(const Job& job) {
    sendAnswer(job.request.number + 1, platform::worker::encodedImageProperties(*imageOfWidth(1)));
    return std::nullopt;
}

// An answer with a descriptor that nobody asked for.
Answer present(const Job& job) {
    const Data value = platform::worker::encodedImageProperties(*imageOfWidth(1));
    const auto head =
        platform::worker::encodedAnswerHead(MediaAnswer::Outcome::value, job.request.number);
    Data bytes(head.begin(), head.end());
    bytes.insert(bytes.end(), value.begin(), value.end());
    iovec part{bytes.data(), bytes.size()};
    alignas(cmsghdr) std::array<char, CMSG_SPACE(sizeof(int))> space{};
    msghdr message{};
    message.msg_iov = &part;
    message.msg_iovlen = 1;
    message.msg_control = space.data();
    message.msg_controllen = space.size();
    cmsghdr* const header = CMSG_FIRSTHDR(&message);
    header->cmsg_level = SOL_SOCKET;
    header->cmsg_type = SCM_RIGHTS;
    header->cmsg_len = CMSG_LEN(sizeof(int));
    std::memcpy(CMSG_DATA(header), &job.descriptor, sizeof(int));
    ::sendmsg(platform::worker::requestSocket, &message, MSG_NOSIGNAL);
    return wait(job);
}

Answer status(const Job& job) {
    return outcome(
        ::lseek(job.descriptor, 0, SEEK_END) < 0 || ::fcntl(job.descriptor, F_GETFL) < 0 ? -1 : 0);
}

/// What is done for each word.
const std::map<std::string_view, std::function<Answer(const Job&)>> words{
    {"width", width},
    {"nothing", [](const Job&) { return Answer(); }},
    {"pid", [](const Job&) { return imageOfWidth(self); }},
    {"status", status},
    {"throw", [](const Job&) -> Answer { throw std::runtime_error("no image"); }},
    {"crash", crash},
    {"abort", [](const Job&) -> Answer { std::abort(); }},
    {"exit", [](const Job&) -> Answer { ::_exit(0); }},
    {"poison", poison},
    {"loop", loop},
    {"work", work},
    {"wait", wait},
    {"memory", memory},
    {"room", room},
    {"code", code},
    {"later-code", laterCode},
    {"merged-memory", mergedMemory},
    {"garbage", garbage},
    {"half", half},
    {"ready", ready},
    {"huge", huge},
    {"value", value},
    {"value-of-less", valueOfLess},
    {"crash-over-text",
     [](const Job& job) { return job.request.wantsText ? crash(job) : value(job); }},
    {"twice", twice},
    {"wrong-number", wrongNumber},
    {"present", present},
    {"open",
     [](const Job& job) { return call(SYS_openat, AT_FDCWD, job.argument.c_str(), O_RDONLY); }},
    {"create",
     [](const Job& job) {
         constexpr int everybody = 0666;
         return call(SYS_openat, AT_FDCWD, job.argument.c_str(), O_WRONLY | O_CREAT, everybody);
     }},
    {"unlink",
     [](const Job& job) { return call(SYS_unlinkat, AT_FDCWD, job.argument.c_str(), 0); }},
    {"write", [](const Job& job) { return call(SYS_write, job.descriptor, "x", 1); }},
    {"truncate", [](const Job& job) { return call(SYS_ftruncate, job.descriptor, 0); }},
    {"socket", [](const Job&) { return call(SYS_socket, AF_INET, SOCK_STREAM, 0); }},
    {"local-socket", [](const Job&) { return call(SYS_socket, AF_UNIX, SOCK_STREAM, 0); }},
    {"exec", [](const Job&) { return call(SYS_execve, "/bin/true", nullptr, nullptr); }},
    {"fork", [](const Job&) { return call(SYS_clone, SIGCHLD, nullptr); }},
    {"kill", [](const Job&) { return call(SYS_kill, self, 0); }},
    {"trace", [](const Job&) { return call(SYS_ptrace, 0, 0, 0, 0); }},
    {"close-socket", [](const Job&) { return call(SYS_close, 0); }},
    {"close-lifeline", [](const Job&) { return call(SYS_close, 1); }},
    {"close-socket-otherwise", [](const Job&) { return closeByAnotherNumber(0); }},
    {"close-lifeline-otherwise", [](const Job&) { return closeByAnotherNumber(1); }},
    {"copy-lifeline", [](const Job&) { return call(SYS_fcntl, 1, F_DUPFD, 0); }},
    {"silence-lifeline",
     [](const Job&) {
         int off = 0;
         return call(SYS_ioctl, 1, FIOASYNC, &off);
     }},
    {"process-option", [](const Job&) { return call(SYS_prctl, PR_GET_DUMPABLE, 0, 0, 0, 0); }},
    {"signal-lifeline", [](const Job&) { return call(SYS_fcntl, 1, F_SETSIG, 0); }},
};

std::optional<Data> handle(const MediaRequest& request, int descriptor) {
    if (isPoisoned) {
        std::abort();
    }
    std::array<char, 4096> contents{};
    const ssize_t size = ::pread(descriptor, contents.data(), contents.size(), 0);
    std::istringstream text(
        std::string(contents.data(), size > 0 ? static_cast<std::size_t>(size) : 0));
    std::string word;
    text >> word;
    std::string argument;
    std::getline(text >> std::ws, argument, '\0');
    const auto found = words.find(word);
    const Answer answer =
        found == words.end() ? Answer() : found->second({request, descriptor, argument});
    return answer ? std::optional(platform::worker::encodedImageProperties(*answer)) : std::nullopt;
}

} // namespace

int main(int /*argc*/, char* argv[]) {
    // By these names it is another program.
    const std::string name = argv[0];
    if (name.ends_with("silent")) {
        return wait({}) ? 0 : 1;
    }
    if (name.ends_with("wrong-greeting")) {
        sendMessage({}, platform::bytesOf("hello"));
        return wait({}) ? 0 : 1;
    }
    return platform::worker::serveMedia(handle);
}
