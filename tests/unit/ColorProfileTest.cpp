// SPDX-License-Identifier: Apache-2.0
// Profiles of colours, out of the samples.
#include "platform/linux/media/ColorProfile.h"

#include "platform/linux/media/ImageReader.h"
#include "tests/unit/support/ImageDescription.h"
#include "tests/unit/support/MemoryFile.h"
#include "tests/unit/support/TiffWriter.h"

#include <fstream>
#include <iterator>
#include <string>
#include <string_view>

#include <gtest/gtest.h>

namespace {

using platform::bytesOf;
using platform::media::maximumProfileSize;
using platform::media::nameOfProfile;

// The one in a JPEG file, behind its mark and two numbers.
std::string profile() {
    using namespace std::string_view_literals;
    constexpr std::string_view mark = "ICC_PROFILE\0\1\1"sv;
    std::ifstream file(std::string(QM_TEST_SAMPLES) + "/profile.jpg", std::ios::binary);
    const std::string image(std::istreambuf_iterator<char>(file), {});
    const auto start = image.find(mark) + mark.size();
    const auto size = static_cast<unsigned char>(image.at(start + 2)) * 256 +
                      static_cast<unsigned char>(image.at(start + 3));
    return image.substr(start, static_cast<std::size_t>(size));
}

} // namespace

TEST(ColorProfile, HasAName) {
    EXPECT_EQ(nameOfProfile(bytesOf(profile())), "Test RGB");
}

TEST(ColorProfile, HasNoNameWithoutADescription) {
    std::string nameless = profile();
    nameless.replace(nameless.find("desc"), 4, "none");
    EXPECT_EQ(nameOfProfile(bytesOf(nameless)), std::nullopt);
}

TEST(ColorProfile, IsNotReadWhereItIsHuge) {
    std::string large = profile();
    large.resize(maximumProfileSize);
    EXPECT_EQ(nameOfProfile(bytesOf(large)), "Test RGB");
    large.push_back('\0');
    EXPECT_EQ(nameOfProfile(bytesOf(large)), std::nullopt);
}

TEST(ColorProfile, MayStandInARawPhoto) {
    using namespace std::string_literals;
    platform::media::prepareImageReaders();
    const std::string bytes = profile();
    const TiffDirectory first{
        tiffLongs(256, {4000}),
        tiffLongs(257, {3000}),
        tiffShorts(262, {32803}), // an array of colour filters
        {34675, 7, static_cast<std::uint32_t>(bytes.size()), bytes, {}},
        {50706, 1, 4, "\1\4\0\0"s, {}},
    };
    const MemoryFile file(tiffBytes(first));
    EXPECT_EQ(ImageDescription::of(platform::media::readImage(file.descriptor(), true)),
              "4000x3000 -1 RGB profile=Test RGB count=1 tiff");
}
