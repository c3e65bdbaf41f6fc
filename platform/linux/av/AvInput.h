// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "platform/linux/OpenedFile.h"

#include <chrono>
#include <cstdint>
#include <memory>
#include <span>
#include <vector>

struct AVFormatContext;

namespace platform::av {

/// A file of films or sound that FFmpeg has opened. One thread.
class AvInput {
public:
    /// Opens what is in `file` from `start` on, which must outlive the input. Boxes whose types
    /// stand at the `hidden` places, in ascending order, are passed over. Null when its format is
    /// none of those that are known, or too damaged.
    [[nodiscard]] static std::unique_ptr<AvInput> open(const OpenedFile& file, std::uint64_t start,
                                                       std::vector<std::uint64_t> hidden);
    AvInput(const AvInput&) = delete;
    AvInput& operator=(const AvInput&) = delete;
    AvInput(AvInput&&) = delete;
    AvInput& operator=(AvInput&&) = delete;
    ~AvInput();

    [[nodiscard]] AVFormatContext& context() const { return *m_context; }
    /// Looks into the streams for what the headers do not say. What is found is in the context.
    void probeStreams();

private:
    AvInput(const OpenedFile& file, std::uint64_t start, std::vector<std::uint64_t> hidden);
    bool openContext();
    void hide(std::span<std::byte> bytes) const;
    // What FFmpeg calls, with this object.
    static int read(void* input, std::uint8_t* buffer, int size);
    static std::int64_t seek(void* input, std::int64_t offset, int whence);
    static int isLate(void* input);

    const OpenedFile& m_file;
    std::uint64_t m_start;
    std::vector<std::uint64_t> m_hidden;
    std::uint64_t m_position; ///< in the file
    std::chrono::nanoseconds m_deadline;
    AVFormatContext* m_context = nullptr;
};

} // namespace platform::av
