// SPDX-License-Identifier: Apache-2.0
// "Standard MIDI Files 1.0": chunks of a type, a size and contents, the first of them the header.
// A track is a row of events, each behind the time since the one before.
#include "platform/linux/av/MidiFile.h"

#include "platform/linux/ByteOrder.h"
#include "platform/linux/ByteText.h"

#include <algorithm>
#include <cstdint>
#include <utility>
#include <vector>

namespace platform::av {
namespace {

/// From `tick` on, a quarter note takes so long.
struct Tempo {
    std::uint64_t tick = 0;
    std::uint32_t microseconds = 0;
};

/// What matters of tracks that play together.
struct Music {
    std::uint64_t end = 0; ///< in ticks
    std::vector<Tempo> tempos;
};

class Track {
public:
    explicit Track(DataView bytes)
        : m_rest(bytes) {}

    void addTo(Music& music) {
        std::uint64_t tick = 0;
        Event event = Event::other;
        while (event == Event::other) {
            const auto time = number();
            event = time ? takeEvent(tick + *time, music.tempos) : Event::damage;
            tick += event == Event::damage ? 0 : *time;
        }
        music.end = std::max(music.end, tick);
    }

private:
    enum class Event { other, end, damage };

    std::optional<unsigned> byte() {
        if (m_rest.empty()) {
            return std::nullopt;
        }
        const auto value = std::to_integer<unsigned>(m_rest.front());
        m_rest = m_rest.subspan(1);
        return value;
    }

    // Seven bits in each byte, of which there are four at most; the last has no mark.
    std::optional<std::uint32_t> number() {
        constexpr int mostBytes = 4;
        constexpr unsigned mark = 0x80;
        std::uint32_t value = 0;
        for (int i = 0; i < mostBytes; ++i) {
            const auto next = byte();
            if (!next) {
                return std::nullopt;
            }
            value = (value << 7U) | (*next & ~mark);
            if ((*next & mark) == 0) {
                return value;
            }
        }
        return std::nullopt;
    }

    Event skip(std::size_t count) {
        if (count > m_rest.size()) {
            return Event::damage;
        }
        m_rest = m_rest.subspan(count);
        return Event::other;
    }

    Event takeEvent(std::uint64_t tick, std::vector<Tempo>& tempos) {
        constexpr unsigned firstStatus = 0x80;
        constexpr unsigned exclusive = 0xF0;
        constexpr unsigned exclusiveGoesOn = 0xF7;
        constexpr unsigned meta = 0xFF;
        constexpr unsigned none = 0xF1;
        const unsigned first = byte().value_or(none);
        if (first == meta) {
            return takeMeta(tick, tempos);
        }
        if (first == exclusive || first == exclusiveGoesOn) {
            const auto size = number();
            return size ? skip(*size) : Event::damage;
        }
        if (first < firstStatus) {
            return m_status == 0 ? Event::damage : skip(dataSize(m_status) - 1);
        }
        if (first > exclusive) {
            return Event::damage; // none, or one that is not for files
        }
        m_status = first;
        return skip(dataSize(first));
    }

    // Of what is said to a channel, by its kind in the upper half.
    static std::size_t dataSize(unsigned status) {
        constexpr unsigned programChange = 0xC0;
        constexpr unsigned pitchBend = 0xE0;
        return status >= programChange && status < pitchBend ? 1 : 2;
    }

    Event takeMeta(std::uint64_t tick, std::vector<Tempo>& tempos) {
        constexpr unsigned endOfTrack = 0x2F;
        constexpr unsigned tempo = 0x51;
        constexpr std::size_t tempoSize = 3;
        const auto kind = byte();
        const auto size = number();
        const DataView data = m_rest;
        if (!size || skip(*size) == Event::damage) {
            return Event::damage;
        }
        if (kind == tempo && *size == tempoSize) {
            const auto upper = std::to_integer<std::uint32_t>(data[0]);
            tempos.push_back({tick, upper << 16U | bigEndian<std::uint16_t>(data, 1)});
        }
        return kind == endOfTrack ? Event::end : Event::other;
    }

    DataView m_rest;
    unsigned m_status = 0; ///< of the last event to a channel, for those that leave it out
};

/// How ticks become seconds: parts of a quarter note, or of a frame of a film.
class Clock {
public:
    explicit Clock(std::uint16_t division)
        : m_division(division) {}

    [[nodiscard]] bool isUsable() const {
        return isOfFrames() ? ticksASecond() > 0 : m_division > 0;
    }

    [[nodiscard]] double secondsOf(Music music) const {
        if (isOfFrames()) {
            return static_cast<double>(music.end) / ticksASecond();
        }
        constexpr std::uint32_t usualTempo = 500'000;
        constexpr double microsecondsASecond = 1e6;
        std::ranges::stable_sort(music.tempos, {}, &Tempo::tick);
        double microseconds = 0;
        Tempo now{0, usualTempo};
        const auto playUntil = [&](std::uint64_t tick) {
            microseconds += static_cast<double>(tick - now.tick) * now.microseconds;
        };
        for (const Tempo& next : music.tempos) { // none of which comes after the end
            playUntil(next.tick);
            now = next;
        }
        playUntil(music.end);
        return microseconds / microsecondsASecond / m_division;
    }

private:
    [[nodiscard]] bool isOfFrames() const { return m_division >= 0x8000; }
    // In a second: so many frames, as a negative number in the upper byte, of so many ticks. 29
    // stands for the rate of American television.
    [[nodiscard]] double ticksASecond() const {
        constexpr unsigned american = 29;
        constexpr double americanRate = 30'000.0 / 1001;
        const unsigned frames = 256 - (m_division >> 8U);
        return (frames == american ? americanRate : frames) * (m_division & 0xFFU);
    }

    unsigned m_division;
};

std::optional<double> durationOfTracks(DataView chunks, const Clock& clock, bool areSeparate) {
    constexpr std::size_t headSize = 8;
    Music together;
    double seconds = 0;
    bool hasTrack = false;
    while (chunks.size() >= headSize) {
        const std::size_t size =
            std::min<std::size_t>(bigEndian<std::uint32_t>(chunks, 4), chunks.size() - headSize);
        if (hasTextAt(chunks, 0, "MTrk")) {
            hasTrack = true;
            Music alone;
            Track(chunks.subspan(headSize, size)).addTo(areSeparate ? alone : together);
            seconds += clock.secondsOf(std::move(alone));
        }
        chunks = chunks.subspan(headSize + size);
    }
    return hasTrack ? std::optional(seconds + clock.secondsOf(std::move(together))) : std::nullopt;
}

} // namespace

std::optional<double> durationOfMidi(const OpenedFile& file) {
    constexpr std::uint64_t maximumSize = std::uint64_t{16} << 20U;
    constexpr std::size_t headSize = 14;
    constexpr std::size_t sizeOffset = 4;
    constexpr std::size_t formatOffset = 8;
    constexpr std::size_t divisionOffset = 12;
    constexpr unsigned separateTracks = 2;
    const auto head = file.bytes(0, headSize, headSize);
    if (!head || !hasTextAt(*head, 0, "MThd")) {
        return std::nullopt;
    }
    const std::uint64_t tracks = formatOffset + bigEndian<std::uint32_t>(*head, sizeOffset);
    const Clock clock(bigEndian<std::uint16_t>(*head, divisionOffset));
    if (tracks < headSize || tracks > file.size() || !clock.isUsable()) {
        return std::nullopt;
    }
    const auto chunks = file.bytes(tracks, file.size() - tracks, maximumSize);
    return chunks
               ? durationOfTracks(*chunks, clock,
                                  bigEndian<std::uint16_t>(*head, formatOffset) == separateTracks)
               : std::nullopt;
}

} // namespace platform::av
