// SPDX-License-Identifier: Apache-2.0
#include "platform/linux/hdiutil/ExpansionFront.h"

#include <gtest/gtest.h>

namespace {

using platform::hdiutil::ExpansionFront;
using platform::hdiutil::UdifChunk;
using Numbers = std::vector<std::uint64_t>;

constexpr std::uint64_t sector = 512;

UdifChunk chunk(std::uint64_t first, std::uint64_t count) {
    return {.kind = UdifChunk::Kind::zlib, .firstSector = first, .sectorCount = count};
}

// Chunks of four sectors, with a gap before the third and behind the last.
const std::vector<UdifChunk> chunks{chunk(0, 4), chunk(4, 4), chunk(12, 4), chunk(16, 4)};
constexpr std::uint64_t diskSize = 24 * sector;

// A front that is asked by two workers, and what it has told so far, in sectors.
class Front {
public:
    explicit Front(std::uint64_t written = 0)
        : m_front(chunks, diskSize, 2,
                  {written, [this](std::uint64_t byte) { told.push_back(byte / sector); }}) {}

    // The first sector of the worker's next chunk; 99 for none.
    std::uint64_t next(std::size_t worker) {
        const UdifChunk* const given = m_front.next(worker);
        return given == nullptr ? 99 : given->firstSector;
    }
    void reached(std::size_t worker, std::uint64_t sectors) {
        m_front.reached(worker, sectors * sector);
    }

    Numbers told;

private:
    ExpansionFront m_front;
};

TEST(ExpansionFront, HandsOutEachChunkOnce) {
    Front front;
    EXPECT_EQ(front.next(0), 0U);
    EXPECT_EQ(front.next(1), 4U);
    EXPECT_EQ(front.next(1), 12U);
    EXPECT_EQ(front.next(0), 16U);
    EXPECT_EQ(front.next(0), 99U);
    EXPECT_EQ(front.next(1), 99U);
}

TEST(ExpansionFront, TellsOnlyWhatHasNoGap) {
    Front front;
    static_cast<void>(front.next(0));
    static_cast<void>(front.next(1));
    static_cast<void>(front.next(1));
    static_cast<void>(front.next(1));
    // The first chunk is still being written.
    EXPECT_EQ(front.told, Numbers{});
    EXPECT_EQ(front.next(0), 99U);
    EXPECT_EQ(front.told, Numbers{16});
    EXPECT_EQ(front.next(1), 99U);
    EXPECT_EQ(front.told, (Numbers{16, 24}));
}

TEST(ExpansionFront, DoesNotWaitForWorkersThatNeverCame) {
    Front front;
    while (front.next(1) != 99) {
    }
    EXPECT_EQ(front.told, (Numbers{4, 12, 16, 24}));
}

TEST(ExpansionFront, GrowsWithinAChunk) {
    Front front;
    static_cast<void>(front.next(0));
    front.reached(0, 0);
    front.reached(0, 1);
    static_cast<void>(front.next(1));
    front.reached(1, 6);
    front.reached(0, 3);
    EXPECT_EQ(front.told, (Numbers{1, 3}));
    static_cast<void>(front.next(0));
    EXPECT_EQ(front.told, (Numbers{1, 3, 6}));
}

TEST(ExpansionFront, GoesOnWhereItWasInterrupted) {
    EXPECT_EQ(Front(0).next(0), 0U);
    EXPECT_EQ(Front(4 * sector - 1).next(0), 0U);
    EXPECT_EQ(Front(4 * sector).next(0), 4U);
    EXPECT_EQ(Front(10 * sector).next(0), 12U);
    EXPECT_EQ(Front(diskSize).next(0), 99U);
    // What is known already is not told again.
    Front front(6 * sector);
    EXPECT_EQ(front.next(0), 4U);
    EXPECT_EQ(front.next(0), 12U);
    EXPECT_EQ(front.told, Numbers{12});
}

TEST(ExpansionFront, NeedsNobodyToListen) {
    ExpansionFront front(chunks, diskSize, 1, {});
    for (const UdifChunk& expected : chunks) {
        EXPECT_EQ(front.next(0), &expected);
    }
    EXPECT_EQ(front.next(0), nullptr);
}

} // namespace
