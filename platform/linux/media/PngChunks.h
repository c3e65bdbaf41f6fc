// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "platform/linux/OpenedFile.h"

#include <cstddef>
#include <cstdint>
#include <span>
#include <vector>

namespace platform::media {

/// The chunks of a PNG file that say something of the image, wherever they stand, as a stream in
/// which they follow each other: signature, chunks, and the beginning of an empty "IDAT". The
/// others are never read, so that a file of any size costs the same. Reading does not check what is
/// in the chunks. One thread at a time.
class PngChunks {
public:
    /// Looks for the chunks; `file` must outlive this. Gives up where the file ends, where its
    /// chunks make no sense, and after a thousand of them.
    explicit PngChunks(const OpenedFile& file);

    /// Fills `buffer` with the next bytes of the stream; false at its end.
    [[nodiscard]] bool read(std::span<std::byte> buffer);

private:
    struct Stretch {
        std::uint64_t offset;
        std::uint64_t length;
    };

    void find();
    [[nodiscard]] bool isWanted(std::uint32_t type, std::uint64_t offset, std::uint32_t length);
    [[nodiscard]] std::uint64_t lastOfRun(DataView head, std::uint64_t offset,
                                          std::uint64_t whole) const;
    [[nodiscard]] std::size_t readPiece(std::span<std::byte> buffer);

    const OpenedFile& m_file;
    std::vector<Stretch> m_stretches;
    std::vector<std::uint32_t> m_seen; // what counts only the first time
    std::size_t m_stretch = 0;
    std::uint64_t m_done = 0; // of the current stretch
    std::size_t m_endDone = 0;
};

} // namespace platform::media
