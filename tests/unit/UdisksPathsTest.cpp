// SPDX-License-Identifier: Apache-2.0
#include "platform/linux/hdiutil/UdisksPaths.h"

#include <string>

#include <gtest/gtest.h>

namespace {

using platform::hdiutil::loopDeviceOf;
using platform::hdiutil::objectPathOf;

const std::string devices = "/org/freedesktop/UDisks2/block_devices/";

TEST(UdisksPaths, AreOfLettersAndDigitsOnly) {
    EXPECT_EQ(objectPathOf("/dev/loop7"), devices + "loop7");
    EXPECT_EQ(objectPathOf("/dev/mapper/Az-09"), devices + "mapper_2fAz_2d09");
    EXPECT_EQ(objectPathOf("@[`{/:"), devices + "_40_5b_60_7b_2f_3a");
    EXPECT_EQ(objectPathOf("loop_7\xFF"), devices + "loop_5f7_ff");
    EXPECT_EQ(objectPathOf(""), devices);
}

TEST(UdisksPaths, LeadToLoopDevicesOnly) {
    EXPECT_EQ(loopDeviceOf(devices + "loop0"), "/dev/loop0");
    EXPECT_EQ(loopDeviceOf(devices + "loop4711"), "/dev/loop4711");
    for (const char* const name : {"", "loop", "loo", "sda1", "loop7p1", "loop7_2f", "loop-1",
                                   "loop7/..", "xloop7", "loop7 "}) {
        EXPECT_EQ(loopDeviceOf(devices + name), std::nullopt) << name;
    }
    EXPECT_EQ(loopDeviceOf("/dev/loop7"), std::nullopt);
    EXPECT_EQ(loopDeviceOf("loop7"), std::nullopt);
    EXPECT_EQ(loopDeviceOf("/org/freedesktop/UDisks2/drives/loop7"), std::nullopt);
}

} // namespace
