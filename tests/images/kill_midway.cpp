// SPDX-License-Identifier: Apache-2.0
// Loaded into a program by LD_PRELOAD, kills it as SIGKILL from outside would, but always at the
// same moment:
//   KILL_AFTER_BYTES=N   when it has written N bytes to places in files
//   KILL_AT_UNLINK=END   when it removes a file whose path ends like that
//   ONE_CORE=1           takes the machine for one with a single core, so that all is in order
// Nothing of the program is asked or told, so no handler and no destructor of it runs.
#include <atomic>
#include <csignal>
#include <cstdlib>
#include <string_view>

#include <fcntl.h>
#include <unistd.h>

#include <sys/syscall.h>

namespace {

std::atomic<std::size_t> written = 0;

// Null where it is not set.
const char* setting(const char* name) {
    return ::getenv(name); // NOLINT(concurrency-mt-unsafe): nobody changes the environment
}

void die() {
    ::kill(::getpid(), SIGKILL);
    ::pause();
}

ssize_t write(int descriptor, const void* bytes, std::size_t count, off_t offset) {
    const char* const limit = setting("KILL_AFTER_BYTES");
    if (limit != nullptr && (written += count) > std::strtoull(limit, nullptr, 10)) {
        die();
    }
    return ::syscall(SYS_pwrite64, descriptor, bytes, count, offset);
}

} // namespace

// The names of parameters in the system's headers are the system's own.
// NOLINTBEGIN(readability-inconsistent-declaration-parameter-name)
extern "C" {

ssize_t pwrite(int descriptor, const void* bytes, std::size_t count, off_t offset) {
    return write(descriptor, bytes, count, offset);
}

ssize_t pwrite64(int descriptor, const void* bytes, std::size_t count, off64_t offset) {
    return write(descriptor, bytes, count, offset);
}

// Where the C++ library asks for the number of threads that are worth it.
int get_nprocs() noexcept {
    return setting("ONE_CORE") != nullptr ? 1 : static_cast<int>(::sysconf(_SC_NPROCESSORS_ONLN));
}

int unlink(const char* path) noexcept {
    const char* const end = setting("KILL_AT_UNLINK");
    if (end != nullptr && std::string_view(path).ends_with(end)) {
        die();
    }
    return static_cast<int>(::syscall(SYS_unlinkat, AT_FDCWD, path, 0));
}
}
// NOLINTEND(readability-inconsistent-declaration-parameter-name)
