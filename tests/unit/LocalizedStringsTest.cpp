// SPDX-License-Identifier: Apache-2.0
#include "platform/LocalizedStrings.h"

#include <gtest/gtest.h>

namespace {

using platform::LocalizedStrings::stringForKey;

TEST(LocalizedStrings, ShowTheKeyWithoutACatalogue) {
    EXPECT_EQ(stringForKey("diskImage.error.notFound"), "diskImage.error.notFound");
    EXPECT_EQ(stringForKey("ü"), "ü");
}

TEST(LocalizedStrings, NeverLookUpTheEmptyKey) {
    EXPECT_EQ(stringForKey(""), "");
}

} // namespace
