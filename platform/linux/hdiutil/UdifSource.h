// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "platform/linux/hdiutil/ByteSource.h"
#include "platform/linux/hdiutil/Udif.h"

#include <cstddef>
#include <memory>
#include <mutex>
#include <vector>

namespace platform::hdiutil {

/// The bytes of the disk in a UDIF image, in any order. Chunks are expanded when they are needed,
/// and the last few are kept. Sectors that no chunk holds read as zeros. What lies in a damaged
/// chunk, or in one that cannot be expanded, cannot be read; the rest can. Any thread.
class UdifSource final : public ByteSource {
public:
    /// `image` is what `readUdif` made of `file`.
    UdifSource(std::shared_ptr<const ByteSource> file, UdifImage image);

    /// What the image holds. It lives as long as this object.
    [[nodiscard]] const UdifImage& image() const { return m_image; }
    [[nodiscard]] std::uint64_t size() const override {
        return m_image.sectorCount * udifSectorSize;
    }
    [[nodiscard]] bool read(std::uint64_t offset, std::span<std::byte> buffer) const override;

private:
    using Bytes = std::shared_ptr<const std::vector<std::byte>>;
    struct Kept {
        std::uint64_t firstSector;
        Bytes bytes;
    };

    bool readChunk(const UdifChunk& chunk, std::uint64_t offset, std::span<std::byte> piece) const;
    [[nodiscard]] Bytes expanded(const UdifChunk& chunk) const;
    [[nodiscard]] Bytes kept(std::uint64_t firstSector) const;
    void keep(std::uint64_t firstSector, const Bytes& bytes) const;

    std::shared_ptr<const ByteSource> m_file;
    UdifImage m_image;
    mutable std::mutex m_mutex;
    // The one that was used last stands last.
    mutable std::vector<Kept> m_kept;
};

} // namespace platform::hdiutil
