// SPDX-License-Identifier: Apache-2.0
#include "platform/linux/hdiutil/UdifCodec.h"

#include "platform/linux/Inflate.h"

#include <algorithm>
#include <cstdint>
#include <limits>

#include <bzlib.h>
#include <lzma.h>

namespace platform::hdiutil {
namespace {

using Kind = UdifChunk::Kind;
using Input = std::span<const std::byte>;
using Output = std::span<std::byte>;

// The strongest preset of xz has a dictionary of 64 MiB, as large as chunks may be.
constexpr std::uint64_t maximumLzmaMemory = std::uint64_t{80} << 20;

// ADC: runs of literals, and matches in what was expanded before, in a short form of two bytes and
// a long one of three. It carries no checksum and no end.
class AdcExpansion {
public:
    AdcExpansion(Input input, Output output)
        : m_input(input)
        , m_output(output) {}

    bool run() {
        while (!m_input.empty()) {
            const std::size_t control = byte(0);
            const bool good = (control & 0x80U) != 0   ? literals((control & 0x7FU) + 1)
                              : (control & 0x40U) != 0 ? longMatch((control & 0x3FU) + 4)
                                                       : shortMatch(((control >> 2U) & 0x0FU) + 3);
            if (!good) {
                return false;
            }
        }
        return m_written == m_output.size();
    }

private:
    [[nodiscard]] std::size_t byte(std::size_t index) const {
        return std::to_integer<std::size_t>(m_input[index]);
    }
    [[nodiscard]] std::size_t room() const { return m_output.size() - m_written; }

    bool literals(std::size_t length) {
        if (m_input.size() - 1 < length || room() < length) {
            return false;
        }
        std::ranges::copy(m_input.subspan(1, length), m_output.subspan(m_written).begin());
        m_input = m_input.subspan(1 + length);
        m_written += length;
        return true;
    }

    bool shortMatch(std::size_t length) {
        return m_input.size() >= 2 && match(2, length, (((byte(0) & 3U) << 8U) | byte(1)) + 1);
    }

    bool longMatch(std::size_t length) {
        return m_input.size() >= 3 && match(3, length, ((byte(1) << 8U) | byte(2)) + 1);
    }

    bool match(std::size_t size, std::size_t length, std::size_t distance) {
        if (distance > m_written || room() < length) {
            return false;
        }
        // One by one: a match may reach into what it writes itself.
        for (std::size_t i = 0; i < length; ++i, ++m_written) {
            m_output[m_written] = m_output[m_written - distance];
        }
        m_input = m_input.subspan(size);
        return true;
    }

    Input m_input;
    Output m_output;
    std::size_t m_written = 0;
};

bool expandBzip2(Input input, Output output) {
    constexpr std::size_t maximum = std::numeric_limits<unsigned>::max();
    if (input.size() > maximum || output.size() > maximum) {
        return false;
    }
    // The library takes its input as characters that it could write to, and does not.
    auto* const source =
        const_cast<char*>(reinterpret_cast<const char*>(input.data())); // NOLINT(*-const-cast)
    auto* const target = reinterpret_cast<char*>(output.data());
    auto length = static_cast<unsigned>(output.size());
    return BZ2_bzBuffToBuffDecompress(target, &length, source, static_cast<unsigned>(input.size()),
                                      0, 0) == BZ_OK &&
           length == output.size();
}

bool expandLzma(Input input, Output output) {
    std::uint64_t memory = maximumLzmaMemory;
    std::size_t used = 0;
    std::size_t written = 0;
    return lzma_stream_buffer_decode(&memory, 0, nullptr,
                                     reinterpret_cast<const std::uint8_t*>(input.data()), &used,
                                     input.size(), reinterpret_cast<std::uint8_t*>(output.data()),
                                     &written, output.size()) == LZMA_OK &&
           written == output.size();
}

} // namespace

bool canExpand(Kind kind) {
    return kind != Kind::lzfse;
}

bool expandChunk(Kind kind, Input input, Output output) {
    switch (kind) {
    case Kind::adc: return AdcExpansion(input, output).run();
    case Kind::zlib: return inflateInto(output, input);
    case Kind::bzip2: return expandBzip2(input, output);
    case Kind::lzma: return expandLzma(input, output);
    case Kind::lzfse:
    case Kind::zero:
    case Kind::raw:
    case Kind::ignore: break;
    }
    return false;
}

bool expandChunkOf(const ByteSource& file, const UdifChunk& chunk, std::vector<std::byte>& packed,
                   Output output) {
    packed.resize(static_cast<std::size_t>(chunk.dataLength));
    return file.read(chunk.dataOffset, packed) && expandChunk(chunk.kind, packed, output);
}

} // namespace platform::hdiutil
