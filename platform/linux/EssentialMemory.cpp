// SPDX-License-Identifier: Apache-2.0
// For a program that can do nothing without memory: when there is none, whoever asked for it, the
// program ends with a line on standard error and status 1. Linking this is enough. These functions
// take the place of the C library's also in shared libraries, some of which use what they get
// without a look at it.
//
// Not for libraries: what an application does without memory is its own affair.
#include <cstddef>
#include <cstdio>
#include <cstring>
#include <string_view>

#include <dlfcn.h>
#include <unistd.h>

extern "C" {
// The C library's own, which need not be looked for.
// NOLINTBEGIN(*-reserved-identifier,*-dcl37-c,*-dcl51-cpp)
void* __libc_malloc(std::size_t size);
void* __libc_calloc(std::size_t count, std::size_t size);
void* __libc_realloc(void* memory, std::size_t size);
// NOLINTEND(*-reserved-identifier,*-dcl37-c,*-dcl51-cpp)
}

namespace {

// Those that come next: the C library's, or a checker's that was loaded in advance, which frees
// what these get. Found on the first call, when there is no other thread.
struct Allocator {
    decltype(&__libc_malloc) malloc;
    decltype(&__libc_calloc) calloc;
    decltype(&__libc_realloc) realloc;
};

enum class Search { notBegun, underWay, done };

constinit Allocator found{__libc_malloc, __libc_calloc, __libc_realloc};
constinit Search search = Search::notBegun;

template <class Function>
void find(Function& function, const char* name) {
    if (void* const next = ::dlsym(RTLD_NEXT, name)) {
        std::memcpy(&function, &next, sizeof function);
    }
}

// To look for a function can take memory itself.
const Allocator& allocator() {
    if (search == Search::notBegun) {
        search = Search::underWay;
        Allocator next = found;
        find(next.malloc, "malloc");
        find(next.calloc, "calloc");
        find(next.realloc, "realloc");
        found = next;
        search = Search::done;
    }
    return found;
}

// Nothing here needs memory. What was printed before still counts.
[[noreturn]] void endWithoutMemory() {
    constexpr std::string_view line = "qm: out of memory\n";
    static_cast<void>(std::fflush(stdout));
    [[maybe_unused]] const auto written = ::write(STDERR_FILENO, line.data(), line.size());
    ::_exit(1);
}

void* checked(void* memory, std::size_t size) {
    if (memory == nullptr && size != 0) {
        endWithoutMemory();
    }
    return memory;
}

} // namespace

// Where shared libraries can see them. Parameters have the names of the C standard's.
extern "C" {

[[gnu::visibility("default")]] void* malloc(std::size_t size) {
    return checked(allocator().malloc(size), size);
}

[[gnu::visibility("default")]] void* calloc(std::size_t nmemb, std::size_t size) {
    return checked(allocator().calloc(nmemb, size), nmemb != 0 ? size : 0);
}

[[gnu::visibility("default")]] void* realloc(void* ptr, std::size_t size) {
    return checked(allocator().realloc(ptr, size), size);
}

} // extern "C"
