// SPDX-License-Identifier: Apache-2.0
// Makes calls of the C library fail, in a program that loads this in advance (LD_PRELOAD):
//
//   FAULT_PROGRAM  the file name of the one program that is meant; those that it starts are spared
//   FAULT_COUNTS   a file for the numbers of calls, a line "NAME NUMBER" each, written at the end
//   FAULT_CALL     which call fails; memory stands for malloc, calloc, realloc and their kin, new
//                  for C++'s operator, where the program has that from a shared library
//   FAULT_FIRST    the first that fails, counted from 1
//   FAULT_LAST     the last that fails; the same one when it is not given, 0 for all that follow
//   FAULT_ERROR    the number of the error; ENOMEM for memory in any case
//   FAULT_SPARED   libraries whose calls do not count, parts of their names with colons in between
//
// What the C library calls inside itself does not come by here.
#undef _FILE_OFFSET_BITS // functions are called by their own names here
#include <algorithm>
#include <array>
#include <atomic>
#include <cerrno>
#include <cstdarg>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <new>
#include <string_view>

#include <dirent.h>
#include <dlfcn.h>
#include <fcntl.h>
#include <link.h>
#include <poll.h>
#include <pthread.h>
#include <spawn.h>
#include <unistd.h>

#include <sys/file.h>
#include <sys/ioctl.h>
#include <sys/mman.h>
#include <sys/mount.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <sys/wait.h>

// The C library's own, which ask nobody.
extern "C" {
void* __libc_malloc(std::size_t size);                    // NOLINT(bugprone-reserved-identifier)
void* __libc_calloc(std::size_t count, std::size_t size); // NOLINT(bugprone-reserved-identifier)
void* __libc_realloc(void* memory, std::size_t size);     // NOLINT(bugprone-reserved-identifier)
void* __libc_memalign(std::size_t alignment,
                      std::size_t size); // NOLINT(bugprone-reserved-identifier)
}

namespace {

struct Call {
    const char* name;
    std::atomic<long> count;
};

std::array<Call, 37> calls{{
    {"memory", 0},     {"open", 0},         {"stat", 0},     {"read", 0},       {"write", 0},
    {"mmap", 0},       {"getcwd", 0},       {"realpath", 0}, {"llistxattr", 0}, {"lgetxattr", 0},
    {"lsetxattr", 0},  {"lremovexattr", 0}, {"socket", 0},   {"connect", 0},    {"send", 0},
    {"receive", 0},    {"poll", 0},         {"fcntl", 0},    {"pipe", 0},       {"clone", 0},
    {"spawn", 0},      {"thread", 0},       {"wait", 0},     {"access", 0},     {"dlopen", 0},
    {"socketpair", 0}, {"new", 0},          {"mkdir", 0},    {"remove", 0},     {"rename", 0},
    {"truncate", 0},   {"sync", 0},         {"lock", 0},     {"ioctl", 0},      {"mount", 0},
    {"unmount", 0},    {"tree", 0},
}};

Call& callNamed(const char* name) {
    for (Call& call : calls) {
        if (std::strcmp(call.name, name) == 0) {
            return call;
        }
    }
    std::fprintf(stderr, "faults: unknown call %s\n", name);
    std::abort();
}

struct Range {
    std::uintptr_t first = 0;
    std::uintptr_t end = 0;
};

bool isCounting = false;
bool isEnding = false;
const Call* failing = nullptr;
long firstFailure = 0;
long lastFailure = 0;
int failureNumber = EIO;
std::array<Range, 4> spared;
std::size_t sparedCount = 0;

long numberFrom(const char* variable, long otherwise) {
    const char* const text = std::getenv(variable);
    return text == nullptr ? otherwise : std::strtol(text, nullptr, 10);
}

// Notes where the code of a library is whose name is among `names`.
int findSpared(dl_phdr_info* library, std::size_t /*size*/, void* names) {
    std::string_view rest = static_cast<const char*>(names);
    while (!rest.empty()) {
        const auto end = std::min(rest.find(':'), rest.size());
        const bool isMeant = std::string_view(library->dlpi_name).find(rest.substr(0, end)) !=
                             std::string_view::npos;
        rest.remove_prefix(std::min(end + 1, rest.size()));
        for (int i = 0; isMeant && i < library->dlpi_phnum && sparedCount < spared.size(); ++i) {
            const auto& part = library->dlpi_phdr[i];
            if (part.p_type == PT_LOAD && (part.p_flags & PF_X) != 0) {
                const std::uintptr_t first = library->dlpi_addr + part.p_vaddr;
                spared.at(sparedCount++) = {first, first + part.p_memsz};
            }
        }
    }
    return 0;
}

__attribute__((constructor)) void begin() {
    const char* const program = std::getenv("FAULT_PROGRAM");
    if (program == nullptr || std::strcmp(program, ::program_invocation_short_name) != 0) {
        return;
    }
    if (char* const library = std::getenv("FAULT_SPARED")) {
        ::dl_iterate_phdr(findSpared, library);
    }
    if (const char* const name = std::getenv("FAULT_CALL")) {
        failing = &callNamed(name);
        firstFailure = numberFrom("FAULT_FIRST", 1);
        lastFailure = numberFrom("FAULT_LAST", firstFailure);
        failureNumber =
            failing == calls.data() ? ENOMEM : static_cast<int>(numberFrom("FAULT_ERROR", EIO));
    }
    isCounting = true;
}

__attribute__((destructor)) void end() {
    const char* const path = isCounting ? std::getenv("FAULT_COUNTS") : nullptr;
    isCounting = false;
    if (std::FILE* const file = path == nullptr ? nullptr : std::fopen(path, "w")) {
        for (const Call& call : calls) {
            std::fprintf(file, "%s %ld\n", call.name, call.count.load());
        }
        std::fclose(file);
    }
}

// Counts a call and tells whether it has to fail; the error's number is set then.
bool fails(Call& call, const void* caller) {
    const auto address = reinterpret_cast<std::uintptr_t>(caller);
    const bool isSpared = std::ranges::any_of(spared, [address](const Range& range) {
        return address >= range.first && address < range.end;
    });
    if (!isCounting || isEnding || isSpared) {
        return false;
    }
    const long number = ++call.count;
    const bool isFailing =
        &call == failing && number >= firstFailure && (lastFailure == 0 || number <= lastFailure);
    if (isFailing) {
        errno = failureNumber;
    }
    return isFailing;
}

// A program that counts how often its lines run writes that down last of all, and undisturbed.
void lookForEnd(const char* path) {
    isEnding = isEnding || std::string_view(path).ends_with(".gcda");
}

template <class Function>
Function next(const char* name) {
    void* const found = ::dlsym(RTLD_NEXT, name);
    if (found == nullptr) {
        std::abort();
    }
    return reinterpret_cast<Function>(found);
}

} // namespace

// FAULTY(CALL, FAILURE, RESULT, NAME, PARAMETERS, ARGUMENTS): the function NAME, which answers
// FAILURE where a call of this kind has to fail.
#define FAULTY(call, failure, result, name, parameters, arguments)                                 \
    extern "C" result name parameters {                                                            \
        static Call& counted = callNamed(call);                                                    \
        static const auto original = next<result(*) parameters>(#name);                            \
        return fails(counted, __builtin_return_address(0)) ? (failure) : original arguments;       \
    }

extern "C" void* malloc(std::size_t size) {
    return fails(calls[0], __builtin_return_address(0)) ? nullptr : __libc_malloc(size);
}
extern "C" void* calloc(std::size_t count, std::size_t size) {
    return fails(calls[0], __builtin_return_address(0)) ? nullptr : __libc_calloc(count, size);
}
extern "C" void* realloc(void* memory, std::size_t size) {
    return fails(calls[0], __builtin_return_address(0)) ? nullptr : __libc_realloc(memory, size);
}
extern "C" void* memalign(std::size_t alignment, std::size_t size) {
    return fails(calls[0], __builtin_return_address(0)) ? nullptr
                                                        : __libc_memalign(alignment, size);
}
extern "C" void* aligned_alloc(std::size_t alignment, std::size_t size) {
    return fails(calls[0], __builtin_return_address(0)) ? nullptr
                                                        : __libc_memalign(alignment, size);
}
extern "C" int posix_memalign(void** memory, std::size_t alignment, std::size_t size) {
    *memory =
        fails(calls[0], __builtin_return_address(0)) ? nullptr : __libc_memalign(alignment, size);
    return *memory == nullptr ? ENOMEM : 0;
}

void* operator new(std::size_t size) {
    static Call& counted = callNamed("new");
    void* const memory =
        fails(counted, __builtin_return_address(0)) ? nullptr : std::malloc(size > 0 ? size : 1);
    return memory != nullptr ? memory : throw std::bad_alloc();
}
void operator delete(void* memory) noexcept {
    std::free(memory);
}
void operator delete(void* memory, std::size_t /*size*/) noexcept {
    std::free(memory);
}

// The mode comes along whether it was given or not: where it was not, nobody looks at it.
#define FAULTY_OPEN(name)                                                                          \
    extern "C" int name(const char* path, int flags, ...) {                                        \
        static Call& counted = callNamed("open");                                                  \
        static const auto original = next<int (*)(const char*, int, ...)>(#name);                  \
        lookForEnd(path);                                                                          \
        std::va_list rest;                                                                         \
        va_start(rest, flags);                                                                     \
        const auto mode = va_arg(rest, mode_t);                                                    \
        va_end(rest);                                                                              \
        return fails(counted, __builtin_return_address(0)) ? -1 : original(path, flags, mode);     \
    }
#define FAULTY_OPENAT(name)                                                                        \
    extern "C" int name(int folder, const char* path, int flags, ...) {                            \
        static Call& counted = callNamed("open");                                                  \
        static const auto original = next<int (*)(int, const char*, int, ...)>(#name);             \
        std::va_list rest;                                                                         \
        va_start(rest, flags);                                                                     \
        const auto mode = va_arg(rest, mode_t);                                                    \
        va_end(rest);                                                                              \
        return fails(counted, __builtin_return_address(0)) ? -1                                    \
                                                           : original(folder, path, flags, mode);  \
    }
FAULTY_OPEN(open)
FAULTY_OPEN(open64)
FAULTY_OPENAT(openat)
FAULTY_OPENAT(openat64)
FAULTY("open", -1, int, __open64_2, (const char* path, int flags), (path, flags))
FAULTY("open", nullptr, DIR*, opendir, (const char* path), (path))
FAULTY("open", nullptr, std::FILE*, fopen, (const char* path, const char* mode), (path, mode))

FAULTY("stat", -1, int, stat, (const char* path, struct stat* status), (path, status))
FAULTY("stat", -1, int, stat64, (const char* path, struct stat64* status), (path, status))
FAULTY("stat", -1, int, lstat, (const char* path, struct stat* status), (path, status))
FAULTY("stat", -1, int, lstat64, (const char* path, struct stat64* status), (path, status))
FAULTY("stat", -1, int, fstat, (int file, struct stat* status), (file, status))
FAULTY("stat", -1, int, fstat64, (int file, struct stat64* status), (file, status))
FAULTY("stat", -1, int, fstatat, (int folder, const char* path, struct stat* status, int flags),
       (folder, path, status, flags))
FAULTY("stat", -1, int, fstatat64, (int folder, const char* path, struct stat64* status, int flags),
       (folder, path, status, flags))
FAULTY("stat", -1, int, statx,
       (int folder, const char* path, int flags, unsigned mask, struct statx* status),
       (folder, path, flags, mask, status))

FAULTY("read", -1, ssize_t, read, (int file, void* bytes, std::size_t size), (file, bytes, size))
FAULTY("read", -1, ssize_t, pread, (int file, void* bytes, std::size_t size, off_t place),
       (file, bytes, size, place))
FAULTY("read", -1, ssize_t, pread64, (int file, void* bytes, std::size_t size, off64_t place),
       (file, bytes, size, place))
FAULTY("write", -1, ssize_t, write, (int file, const void* bytes, std::size_t size),
       (file, bytes, size))
FAULTY("write", -1, ssize_t, pwrite64,
       (int file, const void* bytes, std::size_t size, off64_t place), (file, bytes, size, place))
FAULTY("truncate", -1, int, ftruncate64, (int file, off64_t size), (file, size))
FAULTY("sync", -1, int, fsync, (int file), (file))
FAULTY("lock", -1, int, flock, (int file, int kind), (file, kind))
FAULTY("mkdir", -1, int, mkdir, (const char* path, mode_t mode), (path, mode))
FAULTY("remove", -1, int, rmdir, (const char* path), (path))
FAULTY("remove", -1, int, unlink, (const char* path), (path))
FAULTY("rename", -1, int, rename, (const char* from, const char* to), (from, to))
FAULTY("mmap", MAP_FAILED, void*, mmap,
       (void* place, std::size_t size, int protection, int flags, int file, off_t offset),
       (place, size, protection, flags, file, offset))
FAULTY("mmap", MAP_FAILED, void*, mmap64,
       (void* place, std::size_t size, int protection, int flags, int file, off64_t offset),
       (place, size, protection, flags, file, offset))
FAULTY("getcwd", nullptr, char*, getcwd, (char* path, std::size_t size), (path, size))
FAULTY("realpath", nullptr, char*, realpath, (const char* path, char* resolved), (path, resolved))
FAULTY("access", -1, int, access, (const char* path, int mode), (path, mode))

FAULTY("mount", -1, int, mount,
       (const char* device, const char* folder, const char* type, unsigned long flags,
        const void* options),
       (device, folder, type, flags, options))
FAULTY("unmount", -1, int, umount2, (const char* path, int flags), (path, flags))
FAULTY("tree", -1, int, open_tree, (int folder, const char* path, unsigned flags),
       (folder, path, flags))

FAULTY("llistxattr", -1, ssize_t, llistxattr, (const char* path, char* names, std::size_t size),
       (path, names, size))
FAULTY("lgetxattr", -1, ssize_t, lgetxattr,
       (const char* path, const char* name, void* value, std::size_t size),
       (path, name, value, size))
FAULTY("lsetxattr", -1, int, lsetxattr,
       (const char* path, const char* name, const void* value, std::size_t size, int flags),
       (path, name, value, size, flags))
FAULTY("lremovexattr", -1, int, lremovexattr, (const char* path, const char* name), (path, name))

FAULTY("socket", -1, int, socket, (int domain, int type, int protocol), (domain, type, protocol))
FAULTY("socketpair", -1, int, socketpair, (int domain, int type, int protocol, int* ends),
       (domain, type, protocol, ends))
FAULTY("connect", -1, int, connect, (int file, const sockaddr* address, socklen_t size),
       (file, address, size))
FAULTY("send", -1, ssize_t, send, (int file, const void* bytes, std::size_t size, int flags),
       (file, bytes, size, flags))
FAULTY("send", -1, ssize_t, sendmsg, (int file, const msghdr* message, int flags),
       (file, message, flags))
FAULTY("receive", -1, ssize_t, recv, (int file, void* bytes, std::size_t size, int flags),
       (file, bytes, size, flags))
FAULTY("receive", -1, ssize_t, recvmsg, (int file, msghdr* message, int flags),
       (file, message, flags))
FAULTY("poll", -1, int, poll, (pollfd * files, nfds_t count, int time), (files, count, time))
FAULTY("poll", -1, int, ppoll,
       (pollfd * files, nfds_t count, const timespec* time, const sigset_t* signals),
       (files, count, time, signals))
FAULTY("pipe", -1, int, pipe2, (int* ends, int flags), (ends, flags))
FAULTY("wait", -1, pid_t, waitpid, (pid_t process, int* status, int flags),
       (process, status, flags))
FAULTY("dlopen", nullptr, void*, dlopen, (const char* path, int flags), (path, flags))

FAULTY("spawn", failureNumber, int, posix_spawn,
       (pid_t * process, const char* path, const posix_spawn_file_actions_t* actions,
        const posix_spawnattr_t* attributes, char* const* words, char* const* environment),
       (process, path, actions, attributes, words, environment))
FAULTY("thread", failureNumber, int, pthread_create,
       (pthread_t * thread, const pthread_attr_t* attributes, void* (*start)(void*),
        void* argument),
       (thread, attributes, start, argument))
FAULTY("clone", -1, pid_t, fork, (), ())
FAULTY("clone", -1, pid_t, _Fork, (), ())

extern "C" long syscall(long number, ...) {
    static Call& counted = callNamed("clone");
    static const auto original = next<long (*)(long, ...)>("syscall");
    std::va_list rest;
    va_start(rest, number);
    std::array<long, 6> words{};
    for (long& word : words) {
        word = va_arg(rest, long);
    }
    va_end(rest);
    if (number == SYS_clone && fails(counted, __builtin_return_address(0))) {
        return -1;
    }
    return original(number, words[0], words[1], words[2], words[3], words[4], words[5]);
}

extern "C" int fcntl64(int file, int command, ...) {
    static Call& counted = callNamed("fcntl");
    static const auto original = next<int (*)(int, int, ...)>("fcntl64");
    std::va_list rest;
    va_start(rest, command);
    void* const argument = va_arg(rest, void*);
    va_end(rest);
    return fails(counted, __builtin_return_address(0)) ? -1 : original(file, command, argument);
}

extern "C" int ioctl(int file, unsigned long command, ...) {
    static Call& counted = callNamed("ioctl");
    static const auto original = next<int (*)(int, unsigned long, ...)>("ioctl");
    std::va_list rest;
    va_start(rest, command);
    void* const argument = va_arg(rest, void*);
    va_end(rest);
    return fails(counted, __builtin_return_address(0)) ? -1 : original(file, command, argument);
}
