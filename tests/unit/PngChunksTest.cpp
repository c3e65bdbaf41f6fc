// SPDX-License-Identifier: Apache-2.0
#include "platform/linux/media/PngChunks.h"

#include "platform/linux/media/PngProfileText.h"
#include "tests/unit/support/ByteWriter.h"
#include "tests/unit/support/MemoryFile.h"

#include <string>
#include <string_view>

#include <gtest/gtest.h>

namespace {

using platform::OpenedFile;
using platform::media::bytesOfProfileText;
using platform::media::PngChunks;
using namespace std::string_view_literals;

constexpr std::string_view signature = "\x89PNG\r\n\x1A\n";

std::string chunk(std::string_view type, std::string_view data) {
    return ByteWriter().big(data.size(), 4).text(type).text(data).text("*CRC").bytes();
}

std::string header() {
    return chunk("IHDR", "thirteen byte");
}

// What the chunks of a file make as a stream.
std::string streamOf(std::string_view bytes) {
    const MemoryFile memory(bytes);
    const auto file = OpenedFile::of(memory.descriptor());
    PngChunks chunks(file.value());
    std::string stream;
    char byte = 0;
    while (chunks.read(std::as_writable_bytes(std::span(&byte, 1)))) {
        stream.push_back(byte);
    }
    return stream;
}

std::string stream(std::initializer_list<std::string> chunks) {
    std::string text(signature);
    for (const std::string& part : chunks) {
        text.append(part);
    }
    return text.append("\0\0\0\0IDAT"sv);
}

std::string file(std::initializer_list<std::string> chunks) {
    std::string text(signature);
    for (const std::string& part : chunks) {
        text.append(part);
    }
    return text;
}

} // namespace

TEST(PngChunks, PassOverImageDataAndWhatNobodyAsksFor) {
    const std::string exif = chunk("eXIf", "II*");
    const std::string software = chunk("tEXt", "Software\0S"sv);
    EXPECT_EQ(streamOf(file({header(), chunk("tIME", "1234567"), chunk("IDAT", "abc"),
                             chunk("IDAT", "def"), exif, chunk("tEXt", "Comment\0c"sv), software,
                             chunk("IEND", "")})),
              stream({header(), exif, software}));
}

TEST(PngChunks, TakeTheFirstOfAKind) {
    EXPECT_EQ(streamOf(file({header(), chunk("pHYs", "1"), chunk("pHYs", "2"),
                             chunk("tEXt", "Software\0A"sv), chunk("zTXt", "Software\0B"sv)})),
              stream({header(), chunk("pHYs", "1"), chunk("tEXt", "Software\0A"sv)}));
}

TEST(PngChunks, EndWhereTheFileMakesNoSense) {
    const std::string cutOff = file({header(), chunk("eXIf", "II*")});
    EXPECT_EQ(streamOf(cutOff.substr(0, cutOff.size() - 1)), stream({header()}));
    EXPECT_EQ(streamOf(file({header(), header(), chunk("eXIf", "x")})), stream({header()}));
    EXPECT_EQ(streamOf(file({chunk("eXIf", "x"), header()})), stream({}));
    EXPECT_EQ(streamOf(file({header(), "\xFF\xFF\xFF\xFFtEXt"})), stream({header()}));
    EXPECT_EQ(streamOf(file({header(), chunk("IEND", ""), chunk("eXIf", "x")})),
              stream({header()}));
}

TEST(PngChunks, AreFoundBehindAnyNumberOfEqualOnes) {
    for (int count = 1; count < 70; ++count) {
        std::string whole = file({header()});
        for (int i = 0; i < count; ++i) {
            whole.append(chunk("IDAT", "0123456789"));
        }
        whole.append(chunk("IDAT", "rest")).append(chunk("eXIf", "x")).append(chunk("IEND", ""));
        EXPECT_EQ(streamOf(whole), stream({header(), chunk("eXIf", "x")})) << count;
    }
}

TEST(PngChunks, AreLeftOutWhereTheyAreHuge) {
    constexpr std::size_t most = 16U << 20U;
    EXPECT_EQ(
        streamOf(file({header(), chunk("eXIf", std::string(most + 1, 'x')), chunk("pHYs", "1")})),
        stream({header(), chunk("pHYs", "1")}));
}

TEST(PngChunks, AreNotFollowedForEver) {
    std::string many = file({header()});
    for (int i = 0; i < 2000; ++i) {
        many.append(chunk("IDAT", i % 2 == 0 ? "even" : "other"));
    }
    many.append(chunk("eXIf", "x"));
    EXPECT_EQ(streamOf(many), stream({header()}));
}

TEST(PngProfileText, HoldsBytesAsDigits) {
    const auto text = [](std::string_view profile) {
        const auto bytes = bytesOfProfileText(profile);
        return std::string(reinterpret_cast<const char*>(bytes.data()), bytes.size());
    };
    EXPECT_EQ(text("\nexif\n       3\n616263\n"), "abc");
    EXPECT_EQ(text("\niptc\n3\n61\n6263"), "abc");
    EXPECT_EQ(text("\niptc\n3\n6162"), "");
    EXPECT_EQ(text("\niptc\n2\n616263"), "");
    EXPECT_EQ(text("\niptc\n3\n61626x"), "");
    EXPECT_EQ(text("\niptc\n99999999999999999999\n616263"), "");
    EXPECT_EQ(text("\niptc\n-3\n616263"), "");
    EXPECT_EQ(text("iptc"), "");
    EXPECT_EQ(text(""), "");
}
