// SPDX-License-Identifier: Apache-2.0
#include "services/QMDiskImageService.h"

#include <gtest/gtest.h>

namespace {

TEST(QMDiskImageService, TellsMountableImagesByTheirNames) {
    EXPECT_TRUE(QMDiskImageService::isMountableDiskImage("/a/image.DMG"));
    EXPECT_TRUE(QMDiskImageService::isMountableDiskImage("/nowhere/x.sparsebundle"));
    EXPECT_FALSE(QMDiskImageService::isMountableDiskImage("/a/image.dmg.zip"));
    EXPECT_FALSE(QMDiskImageService::isMountableDiskImage(""));
}

} // namespace
