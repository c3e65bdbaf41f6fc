// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <string>
#include <string_view>
#include <vector>

#include <unistd.h>

/// A file that stays in the page cache while it is measured.
class CachedFile {
public:
    /// A file of `size` zero bytes.
    explicit CachedFile(std::size_t size) {
        const std::vector<char> piece(std::size_t{1} << 20);
        while (size > 0) {
            const std::size_t length = std::min(piece.size(), size);
            append({piece.data(), length});
            size -= length;
        }
    }
    explicit CachedFile(std::string_view contents) { append(contents); }
    CachedFile(const CachedFile&) = delete;
    CachedFile& operator=(const CachedFile&) = delete;
    CachedFile(CachedFile&&) = delete;
    CachedFile& operator=(CachedFile&&) = delete;
    ~CachedFile() {
        ::close(m_descriptor);
        ::unlink(m_path.c_str());
    }
    [[nodiscard]] const std::string& path() const { return m_path; }

private:
    void append(std::string_view bytes) const {
        while (!bytes.empty()) {
            const ssize_t count = ::write(m_descriptor, bytes.data(), bytes.size());
            if (count <= 0) {
                std::abort();
            }
            bytes.remove_prefix(static_cast<std::size_t>(count));
        }
    }

    std::string m_path = "/tmp/qm-bench-XXXXXX";
    int m_descriptor = ::mkstemp(m_path.data());
};
