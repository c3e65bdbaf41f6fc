// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "platform/linux/Descriptor.h"

#include <stdexcept>
#include <string_view>

#include <unistd.h>

#include <sys/mman.h>

/// A regular file that has these bytes and no name.
class MemoryFile {
public:
    explicit MemoryFile(std::string_view contents)
        : m_descriptor(::memfd_create("file", MFD_CLOEXEC)) {
        const ssize_t count = ::write(m_descriptor.number(), contents.data(), contents.size());
        if (count != static_cast<ssize_t>(contents.size())) {
            throw std::runtime_error("no file in memory");
        }
    }

    [[nodiscard]] int descriptor() const { return m_descriptor.number(); }

private:
    platform::Descriptor m_descriptor;
};
