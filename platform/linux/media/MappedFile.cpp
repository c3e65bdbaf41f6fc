// SPDX-License-Identifier: Apache-2.0
#include "platform/linux/media/MappedFile.h"

#include <algorithm>
#include <limits>

#include <sys/mman.h>

namespace platform::media {

MappedFile::MappedFile(const OpenedFile& file, std::uint64_t length) {
    length =
        std::min({length, file.size(), std::uint64_t{std::numeric_limits<std::ptrdiff_t>::max()}});
    if (length == 0) {
        return;
    }
    const auto count = static_cast<std::size_t>(length);
    void* const start = ::mmap(nullptr, count, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_NORESERVE,
                               file.descriptor(), 0);
    if (start != MAP_FAILED) {
        m_bytes = {static_cast<std::byte*>(start), count};
    }
}

MappedFile::~MappedFile() {
    if (!m_bytes.empty()) {
        ::munmap(m_bytes.data(), m_bytes.size());
    }
}

} // namespace platform::media
