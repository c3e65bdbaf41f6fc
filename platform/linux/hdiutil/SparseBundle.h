// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "platform/linux/hdiutil/ByteSource.h"

#include <cstdint>
#include <memory>
#include <string>
#include <utility>
#include <variant>
#include <vector>

namespace platform::hdiutil {

/// The disk in a sparse bundle (".sparsebundle"): a folder with a description, "Info.plist", and a
/// folder "bands" with a file for each band of the disk that was ever written, named by its number
/// in hexadecimal. Laid out as seen in images.
class SparseBundle final : public ByteSource {
public:
    /// Whether the folder at `path` looks like one.
    [[nodiscard]] static bool isSparseBundle(const std::string& path);

    /// The disk in the folder at `path`, or why it cannot be read, for people.
    [[nodiscard]] static std::variant<std::shared_ptr<const SparseBundle>, std::string>
    open(const std::string& path);

    [[nodiscard]] std::uint64_t size() const override { return m_size; }
    [[nodiscard]] bool read(std::uint64_t offset, std::span<std::byte> buffer) const override;
    /// Knows the bands that were there when the bundle was opened.
    [[nodiscard]] std::uint64_t nextData(std::uint64_t offset) const override;

    /// Whether the bands are encrypted; their bytes are of no use then.
    [[nodiscard]] bool isEncrypted() const;

    /// Bytes of the bands' files.
    [[nodiscard]] std::uint64_t storedBytes() const;

private:
    SparseBundle(std::string path, std::uint64_t size, std::uint64_t bandSize,
                 std::vector<std::uint64_t> bands)
        : m_path(std::move(path))
        , m_size(size)
        , m_bandSize(bandSize)
        , m_bands(std::move(bands)) {}

    [[nodiscard]] std::string pathOfBand(std::uint64_t number) const;
    [[nodiscard]] bool readBand(std::uint64_t number, std::uint64_t offset,
                                std::span<std::byte> buffer) const;
    [[nodiscard]] std::uint64_t nextDataInBand(std::uint64_t number, std::uint64_t offset) const;

    std::string m_path;
    std::uint64_t m_size;
    std::uint64_t m_bandSize;
    std::vector<std::uint64_t> m_bands; ///< numbers, rising
};

} // namespace platform::hdiutil
