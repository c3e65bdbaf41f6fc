// SPDX-License-Identifier: Apache-2.0
#include "platform/linux/worker/Confinement.h"

#include <algorithm>
#include <cerrno>
#include <csignal>
#include <memory>

#include <fcntl.h>
#include <seccomp.h>
#include <unistd.h>

#include <sys/mman.h>
#include <sys/prctl.h>
#include <sys/resource.h>

namespace platform::worker {
namespace {

constexpr rlim_t descriptorLimit = 16;

/// The filter while it is put together.
class Filter {
public:
    Filter()
        : m_context(::seccomp_init(SCMP_ACT_ERRNO(EPERM)), &::seccomp_release)
        , m_isSound(m_context != nullptr) {
        // Threads that a library has started already are no way out.
        m_isSound = m_isSound && ::seccomp_attr_set(m_context.get(), SCMP_FLTATR_CTL_TSYNC, 1) == 0;
    }

    void allow(int call) { add(call, 0, nullptr); }
    void allow(int call, const scmp_arg_cmp& condition) { add(call, 1, &condition); }

    bool load() { return m_isSound && ::seccomp_load(m_context.get()) == 0; }

private:
    void add(int call, unsigned count, const scmp_arg_cmp* conditions) {
        m_isSound = m_isSound && ::seccomp_rule_add_array(m_context.get(), SCMP_ACT_ALLOW, call,
                                                          count, conditions) == 0;
    }

    std::unique_ptr<void, decltype(&::seccomp_release)> m_context;
    bool m_isSound;
};

scmp_arg_cmp equals(unsigned argument, std::uint64_t value) {
    return {argument, SCMP_CMP_EQ, value, 0};
}
scmp_arg_cmp lacks(unsigned argument, std::uint64_t bit) {
    return {argument, SCMP_CMP_MASKED_EQ, bit, 0};
}

void allowReading(Filter& filter) {
    for (const int call : {SCMP_SYS(read), SCMP_SYS(pread64), SCMP_SYS(readv), SCMP_SYS(preadv),
                           SCMP_SYS(lseek), SCMP_SYS(fstat)}) {
        filter.allow(call);
    }
    // How the C library spells fstat on some machines, with an empty name. The filter cannot see
    // the name, so the status of other files can be had this way, but nothing that is in them.
    filter.allow(SCMP_SYS(newfstatat), equals(3, AT_EMPTY_PATH));
    // What stdio asks of a descriptor that it is given.
    filter.allow(SCMP_SYS(fcntl), equals(1, F_GETFL));
}

void allowMemory(Filter& filter) {
    constexpr unsigned protection = 2;
    filter.allow(SCMP_SYS(mmap), lacks(protection, PROT_EXEC));
    filter.allow(SCMP_SYS(mprotect), lacks(protection, PROT_EXEC));
    for (const int call : {SCMP_SYS(munmap), SCMP_SYS(mremap), SCMP_SYS(brk), SCMP_SYS(futex),
                           SCMP_SYS(getrandom)}) {
        filter.allow(call);
    }
    // What the C library advises. Other advice reaches beyond this process.
    for (const int advice : {MADV_DONTNEED, MADV_FREE, MADV_HUGEPAGE}) {
        filter.allow(SCMP_SYS(madvise), equals(2, static_cast<std::uint64_t>(advice)));
    }
}

void allowItself(Filter& filter) {
    for (const int call : {SCMP_SYS(clock_gettime), SCMP_SYS(gettimeofday), SCMP_SYS(rt_sigaction),
                           SCMP_SYS(rt_sigprocmask), SCMP_SYS(rt_sigreturn),
                           SCMP_SYS(restart_syscall), SCMP_SYS(exit), SCMP_SYS(exit_group)}) {
        filter.allow(call);
    }
}

bool filterSystemCalls(int socket, int lifeline) {
    const auto requests = static_cast<std::uint64_t>(socket);
    Filter filter;
    allowReading(filter);
    allowMemory(filter);
    allowItself(filter);
    filter.allow(SCMP_SYS(recvmsg), equals(0, requests));
    filter.allow(SCMP_SYS(sendmsg), equals(0, requests));
    // One by one, as the kernel ignores the upper half of a number, and the filter does not.
    for (auto number = static_cast<rlim_t>(std::max(socket, lifeline)) + 1;
         number < descriptorLimit; ++number) {
        filter.allow(SCMP_SYS(close), equals(0, number));
    }
    return filter.load();
}

bool limit(decltype(RLIMIT_CORE) resource, rlim_t value) {
    rlimit now{};
    if (::getrlimit(resource, &now) != 0) {
        return false;
    }
    const rlim_t lower = std::min(value, now.rlim_max);
    const rlimit wanted{lower, lower};
    return ::setrlimit(resource, &wanted) == 0;
}

} // namespace

bool endWith(int lifeline) {
    return ::fcntl(lifeline, F_SETOWN, ::getpid()) == 0 &&
           ::fcntl(lifeline, F_SETSIG, SIGKILL) == 0 && ::fcntl(lifeline, F_SETFL, O_ASYNC) == 0;
}

bool confine(int socket, int lifeline) {
    // A program that the system hands cores to would be run at 0: it is no matter of size to that.
    constexpr rlim_t noCore = 1;
    if (!limit(RLIMIT_CORE, noCore) || !limit(RLIMIT_FSIZE, 0) ||
        !limit(RLIMIT_NOFILE, descriptorLimit) || ::prctl(PR_SET_NO_NEW_PRIVS, 1, 0, 0, 0) != 0) {
        return false;
    }
    if constexpr (filtersSystemCalls) {
        return limit(RLIMIT_AS, memoryLimit) && filterSystemCalls(socket, lifeline);
    } else {
        static_cast<void>(filterSystemCalls);
        return true;
    }
}

} // namespace platform::worker
