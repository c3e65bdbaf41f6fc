// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "platform/FileHandle.h"

#include <cstddef>
#include <cstdint>
#include <cstring>

#include <fcntl.h>
#include <unistd.h>

#include <sys/mman.h>

/// A file whose reading fails half-way with a real error: the process's own memory, read up to the
/// end of a mapping behind which nothing is mapped.
class FailingRead {
public:
    explicit FailingRead(std::size_t readableBytes, char fill)
        : m_size(rounded(readableBytes)) {
        m_memory = ::mmap(nullptr, m_size + hole, PROT_READ | PROT_WRITE,
                          MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
        std::memset(m_memory, fill, m_size);
        ::munmap(static_cast<char*>(m_memory) + m_size, hole);
        m_start = m_size - readableBytes;
    }
    FailingRead(const FailingRead&) = delete;
    FailingRead& operator=(const FailingRead&) = delete;
    FailingRead(FailingRead&&) = delete;
    FailingRead& operator=(FailingRead&&) = delete;
    ~FailingRead() { ::munmap(m_memory, m_size); }

    /// The file, at the first of the readable bytes.
    [[nodiscard]] platform::FileHandle open() const {
        const int descriptor = ::open("/proc/self/mem", O_RDONLY | O_CLOEXEC);
        const auto address = reinterpret_cast<std::uintptr_t>(m_memory) + m_start;
        ::lseek(descriptor, static_cast<off_t>(address), SEEK_SET);
        return platform::FileHandle::fromDescriptor(descriptor);
    }

private:
    static constexpr std::size_t pageSize = 65536; // a multiple of every page size in use
    static constexpr std::size_t hole = pageSize;
    static std::size_t rounded(std::size_t size) {
        return (size + pageSize - 1) / pageSize * pageSize;
    }

    std::size_t m_size;
    std::size_t m_start = 0;
    void* m_memory = nullptr;
};
