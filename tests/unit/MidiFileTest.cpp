// SPDX-License-Identifier: Apache-2.0
#include "platform/linux/av/MidiFile.h"

#include "platform/linux/av/AvReader.h"
#include "tests/unit/support/MemoryFile.h"

#include <initializer_list>
#include <string>
#include <string_view>

#include <gtest/gtest.h>

namespace {

using namespace std::string_literals;
using namespace std::string_view_literals;

constexpr std::uint16_t ticks = 96; // in a quarter note, of half a second
const std::string quarter(1, static_cast<char>(ticks));
const std::string endOfTrack = "\0\xFF\x2F\0"s;

std::string bigEndian(std::uint32_t number, int size) {
    std::string bytes;
    for (int shift = (size - 1) * 8; shift >= 0; shift -= 8) {
        bytes.push_back(static_cast<char>(number >> shift & 0xFFU));
    }
    return bytes;
}

std::string chunk(std::string_view type, std::string_view contents) {
    std::string bytes(type);
    bytes.append(bigEndian(static_cast<std::uint32_t>(contents.size()), 4));
    return bytes.append(contents);
}

// A file of tracks that have these events.
std::string music(std::initializer_list<std::string> tracks, std::uint32_t format = 1,
                  std::uint32_t division = ticks) {
    std::string bytes = chunk("MThd", bigEndian(format, 2) +
                                          bigEndian(static_cast<std::uint32_t>(tracks.size()), 2) +
                                          bigEndian(division, 2));
    for (const std::string& track : tracks) {
        bytes.append(chunk("MTrk", track));
    }
    return bytes;
}

// A tempo by microseconds for a quarter note, set after a time below 128 ticks.
std::string tempo(char after, std::uint32_t microseconds) {
    return std::string(1, after).append("\xFF\x51\x03").append(bigEndian(microseconds, 3));
}

std::optional<double> durationOf(std::string_view bytes) {
    const MemoryFile contents(bytes);
    return platform::av::durationOfMidi(platform::OpenedFile::of(contents.descriptor()).value());
}

// A note that is let go after this time, as it is written down.
std::string note(std::string_view time) {
    return "\0\x90\x40\x40"s.append(time).append("\x80\x40\0"sv);
}

} // namespace

TEST(MidiFile, PlaysUntilItsTrackEnds) {
    EXPECT_EQ(durationOf(music({note(quarter) + endOfTrack})), 0.5);
    EXPECT_EQ(durationOf(music({note(quarter) + "\x30\xFF\x2F\0"s})), 0.75);
    EXPECT_EQ(durationOf(music({endOfTrack})), 0.0);
    EXPECT_EQ(durationOf(music({note(quarter)})), 0.5);
    EXPECT_EQ(durationOf(music({endOfTrack + note(quarter)})), 0.0);
}

TEST(MidiFile, TimesHaveFourBytesAtMost) {
    // 2 to the 7th, to the 14th and to the 21st, and the largest.
    EXPECT_EQ(durationOf(music({note("\x81\0"sv)})), 128 * 0.5 / 96);
    EXPECT_EQ(durationOf(music({note("\x81\x80\0"sv)})), 16384 * 0.5 / 96);
    EXPECT_EQ(durationOf(music({note("\x81\x80\x80\0"sv)})), 2097152 * 0.5 / 96);
    EXPECT_EQ(durationOf(music({note("\xFF\xFF\xFF\x7F")})), 268435455 * 0.5 / 96);
    EXPECT_EQ(durationOf(music({note("\xFF\xFF\xFF\xFF\x7F")})), 0.0);
}

TEST(MidiFile, PlaysAtTheTempoOfTheMoment) {
    EXPECT_EQ(durationOf(music({tempo(0, 250'000) + note(quarter)})), 0.25);
    EXPECT_EQ(durationOf(music({note(quarter) + tempo(0, 1'000'000) + note(quarter)})), 1.5);
    EXPECT_EQ(durationOf(music({tempo(96, 1'000'000) + note(quarter)})), 1.5);
    EXPECT_EQ(durationOf(music({note(quarter), tempo(48, 1'000'000)})), 0.75);
    EXPECT_EQ(durationOf(music({tempo(0, 0) + note(quarter)})), 0.0);
    EXPECT_EQ(durationOf(music({note(quarter) + tempo(0, 1'000'000)})), 0.5);
    // Not three bytes: no tempo.
    EXPECT_EQ(durationOf(music({"\0\xFF\x51\2\0\0"s + note(quarter)})), 0.5);
}

TEST(MidiFile, TracksPlayTogetherUnlessTheyArePieces) {
    const std::string slow = tempo(0, 1'000'000) + note(quarter);
    EXPECT_EQ(durationOf(music({note(quarter), note("\x30")})), 0.5);
    EXPECT_EQ(durationOf(music({slow, note(quarter)}, 1)), 1.0);
    EXPECT_EQ(durationOf(music({slow, note(quarter)}, 2)), 1.5);
}

TEST(MidiFile, TicksMayBePartsOfFrames) {
    constexpr std::string_view second = "\x87\x68";                             // 1000 ticks
    EXPECT_EQ(durationOf(music({tempo(0, 1) + note(second)}, 0, 0xE728)), 1.0); // 25 times 40
    EXPECT_EQ(durationOf(music({note(second)}, 0, 0xE264)), 1000.0 / 3000);     // 30 times 100
    EXPECT_DOUBLE_EQ(*durationOf(music({note(second)}, 0, 0xE364)), 1001.0 / 3000);
}

TEST(MidiFile, EventsMayLeaveOutWhatTheyShareWithTheLast) {
    EXPECT_EQ(durationOf(music({note(quarter) + "\x60\x40\0"s})), 1.0);
    EXPECT_EQ(durationOf(music({"\0\xC0\x05\x60\x06"s})), 0.5); // one byte
    EXPECT_EQ(durationOf(music({"\x60\x40\0"s + endOfTrack})), 0.0);
}

TEST(MidiFile, PassesOverWhatTakesNoTime) {
    EXPECT_EQ(durationOf(music({"\0\xF0\2\x01\xF7\0\xF7\1\x02"s + note(quarter)})), 0.5);
    EXPECT_EQ(durationOf(music({"\0\xFF\3\4Name"s + note(quarter)})), 0.5);
    const std::string bytes = music({note(quarter)});
    EXPECT_EQ(durationOf(bytes + chunk("XFIH", "more")), 0.5);
    // A header may grow.
    EXPECT_EQ(durationOf(chunk("MThd", "\0\0\0\1\0\x60more"sv) + chunk("MTrk", note(quarter))),
              0.5);
}

TEST(MidiFile, EndsWhereItIsDamaged) {
    EXPECT_EQ(durationOf(music({note(quarter) + "\x60\xF4"s})), 0.5);
    EXPECT_EQ(durationOf(music({note(quarter) + "\x60\xFF\1\x7FText"s})), 0.5);
    EXPECT_EQ(durationOf(music({note(quarter) + "\x60\x90\x40"s})), 0.5);
    EXPECT_EQ(durationOf(music({note(quarter) + "\x60\xFF\x51\3\0"s})), 0.5);
    const std::string whole = music({note(quarter), note(quarter)});
    for (std::size_t size = 0; size < whole.size(); ++size) {
        const auto found = durationOf(std::string_view(whole).substr(0, size));
        EXPECT_EQ(found.has_value(), size >= 22) << size;
        EXPECT_LE(found.value_or(0), 0.5) << size;
    }
}

TEST(MidiFile, IsNothingWithoutTracksOrTime) {
    EXPECT_EQ(durationOf(""), std::nullopt);
    EXPECT_EQ(durationOf(music({})), std::nullopt);
    EXPECT_EQ(durationOf(music({note(quarter)}, 1, 0)), std::nullopt);
    EXPECT_EQ(durationOf(music({note(quarter)}, 1, 0xE700)), std::nullopt);
    EXPECT_EQ(durationOf("RIFF" + music({note(quarter)})), std::nullopt);
    EXPECT_EQ(durationOf("MThd\xFF\xFF\xFF\xFF\0\1\0\1\0\x60MTrk"s), std::nullopt);
    EXPECT_EQ(durationOf("MThd\0\0\0\0\0\1\0\1\0\x60MTrk\0\0\0\0"s), std::nullopt);
    EXPECT_EQ(durationOf(music({note(quarter)}).append(std::size_t{16} << 20U, '\0')),
              std::nullopt);
}

TEST(MidiFile, IsReadAsARecordingWithoutTracks) {
    const MemoryFile contents(music({note(quarter)}));
    const auto asset = platform::av::readMediaAsset(contents.descriptor(), true);
    platform::MediaAssetProperties expected;
    expected.duration = 0.5;
    EXPECT_EQ(asset, expected);
}
