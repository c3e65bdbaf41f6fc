// SPDX-License-Identifier: Apache-2.0
#include "platform/linux/hdiutil/ExpansionProgress.h"

#include <gtest/gtest.h>

namespace {

using platform::Data;
using platform::hdiutil::currentBoot;
using platform::hdiutil::ExpansionProgress;
using platform::hdiutil::ImageState;

ExpansionProgress progress() {
    ImageState state;
    state.digest.fill(std::byte{0x5A});
    return {.written = 7,
            .diskSize = 1U << 20U,
            .diskInode = UINT64_MAX,
            .boot = "01234567-89ab-cdef-0123-456789abcdef",
            .state = state,
            .image = "/a/image\xFF.dmg"};
}

TEST(ExpansionProgress, SurvivesBeingWritten) {
    EXPECT_EQ(ExpansionProgress::parse(progress().serialized()), progress());
    ExpansionProgress long_ = progress();
    long_.image.assign(4096, 'x');
    EXPECT_EQ(ExpansionProgress::parse(long_.serialized()), long_);
}

TEST(ExpansionProgress, GrowsByTheReplacingOfItsStart) {
    Data bytes = progress().serialized();
    std::ranges::copy(ExpansionProgress::startOf(1U << 20U), bytes.begin());
    ExpansionProgress grown = progress();
    grown.written = 1U << 20U;
    EXPECT_EQ(ExpansionProgress::parse(bytes), grown);
}

TEST(ExpansionProgress, IsNeverMoreThanTheDisk) {
    for (const std::uint64_t written : {std::uint64_t{1} << 20U | 1U, UINT64_MAX}) {
        ExpansionProgress absurd = progress();
        absurd.written = written;
        EXPECT_EQ(ExpansionProgress::parse(absurd.serialized()), std::nullopt);
    }
}

TEST(ExpansionProgress, IsNotReadFromDamagedBytes) {
    const Data whole = progress().serialized();
    for (std::size_t i = 0; i < whole.size(); ++i) {
        Data damaged = whole;
        damaged[i] ^= std::byte{0x10};
        EXPECT_EQ(ExpansionProgress::parse(damaged), std::nullopt) << i;
        damaged.resize(i);
        EXPECT_EQ(ExpansionProgress::parse(damaged), std::nullopt) << i;
    }
    Data longer = whole;
    longer.push_back(std::byte{0});
    EXPECT_EQ(ExpansionProgress::parse(longer), std::nullopt);
    ExpansionProgress huge = progress();
    huge.image.assign(ExpansionProgress::maximumSize, 'x');
    EXPECT_EQ(ExpansionProgress::parse(huge.serialized()), std::nullopt);
}

TEST(CurrentBoot, IsTheSameAsLongAsTheSystemRuns) {
    EXPECT_EQ(currentBoot().size(), 36U);
    EXPECT_EQ(currentBoot(), currentBoot());
}

} // namespace
