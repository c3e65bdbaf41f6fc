// SPDX-License-Identifier: Apache-2.0
#include "platform/ByteCountFormatter.h"

#include <cstdint>
#include <limits>
#include <string>
#include <vector>

#include <gtest/gtest.h>

namespace {

struct Row {
    std::int64_t bytes;
    std::string text;
};

const std::vector<Row> rows{
    {0, "Zero KB"},
    {1, "1 byte"},
    {2, "2 bytes"},
    {499, "499 bytes"},
    {999, "999 bytes"},
    {1000, "1 KB"},
    {1023, "1 KB"},
    {1024, "1 KB"},
    {1499, "1 KB"},
    {1500, "2 KB"},
    {2500, "3 KB"},
    {5500, "6 KB"},
    {9999, "10 KB"},
    {11'999, "12 KB"},
    {12'345, "12 KB"},
    {900'000, "900 KB"},
    {999'499, "999 KB"},
    {999'500, "1 MB"},
    {999'999, "1 MB"},
    {1'000'000, "1 MB"},
    {1'049'000, "1 MB"},
    {1'050'000, "1.1 MB"},
    {1'100'000, "1.1 MB"},
    {1'250'000, "1.3 MB"},
    {1'500'000, "1.5 MB"},
    {12'345'678, "12.3 MB"},
    {123'456'789, "123.5 MB"},
    {999'900'000, "999.9 MB"},
    {999'949'999, "999.9 MB"},
    {999'950'000, "1 GB"},
    {999'999'999, "1 GB"},
    {1'234'567'890, "1.23 GB"},
    {4'200'000'000, "4.2 GB"},
    {12'345'678'987, "12.35 GB"},
    {999'994'999'999, "999.99 GB"},
    {999'995'000'000, "1 TB"},
    {1'000'000'000'000, "1 TB"},
    {999'994'999'999'999, "999.99 TB"},
    {999'995'000'000'000, "1 PB"},
    {1'000'000'000'000'000, "1 PB"},
    {1'000'000'000'000'000'000, "1 EB"},
    {std::numeric_limits<std::int64_t>::max(), "9.22 EB"},
    {-1, "-1 byte"},
    {-2, "-2 bytes"},
    {-1023, "-1 KB"},
    {-1'234'567'898, "-1.23 GB"},
    {std::numeric_limits<std::int64_t>::min(), "-9.22 EB"},
};

TEST(ByteCountFormatter, WritesFileSizesAsPeopleExpect) {
    for (const Row& row : rows) {
        EXPECT_EQ(platform::ByteCountFormatter::fileStyle(row.bytes), row.text) << row.bytes;
    }
}

} // namespace
