// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "platform/linux/hdiutil/ByteSource.h"

#include <cstdint>
#include <map>
#include <memory>
#include <string>
#include <variant>

namespace platform::hdiutil {

/// The disk in a sparse image (".sparseimage"): a file that holds the bands of the disk that were
/// ever written, in the order of their writing. Laid out as seen in images, all numbers big endian.
class SparseImage final : public ByteSource {
public:
    /// Whether `file` begins like one.
    [[nodiscard]] static bool isSparseImage(const ByteSource& file);

    /// The disk in `file`, or why it cannot be read, for people.
    [[nodiscard]] static std::variant<std::shared_ptr<const SparseImage>, std::string>
    open(std::shared_ptr<const ByteSource> file);

    [[nodiscard]] std::uint64_t size() const override { return m_size; }
    [[nodiscard]] bool read(std::uint64_t offset, std::span<std::byte> buffer) const override;
    [[nodiscard]] std::uint64_t nextData(std::uint64_t offset) const override;

    /// Bytes of the bands that the file holds.
    [[nodiscard]] std::uint64_t storedBytes() const;

private:
    explicit SparseImage(std::shared_ptr<const ByteSource> file)
        : m_file(std::move(file)) {}

    [[nodiscard]] std::string readBands();
    [[nodiscard]] std::string readTable(std::uint64_t header, std::uint64_t& end);

    std::shared_ptr<const ByteSource> m_file;
    std::uint64_t m_size = 0;
    std::uint64_t m_bandSize = 0;
    std::map<std::uint64_t, std::uint64_t> m_bands; ///< band number to file offset
};

} // namespace platform::hdiutil
