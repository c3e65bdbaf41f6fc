// SPDX-License-Identifier: Apache-2.0
#include "platform/linux/av/CodecCode.h"

#include "platform/linux/av/FFmpeg.h"

#include <array>
#include <string>
#include <string_view>
#include <vector>

#include <gtest/gtest.h>

namespace {

using platform::av::codeOfAudio;
using platform::av::codeOfVideo;

constexpr const char* mp4 = "mov,mp4,m4a,3gp,3g2,mj2";

/// A stream of this format.
class Stream {
public:
    explicit Stream(AVCodecID codec, std::string_view stored = std::string_view("\0\0\0\0", 4)) {
        m_format.codec_id = codec;
        m_format.profile = FF_PROFILE_UNKNOWN;
        for (std::size_t i = 4; i > 0; --i) {
            m_format.codec_tag =
                (m_format.codec_tag << 8U) | static_cast<unsigned char>(stored[i - 1]);
        }
        m_stream.codecpar = &m_format;
    }
    Stream(const Stream&) = delete;
    Stream& operator=(const Stream&) = delete;

    AVCodecParameters& format() { return m_format; }
    void setDescription(std::vector<std::uint8_t> bytes) {
        m_description = std::move(bytes);
        m_format.extradata = m_description.data();
        m_format.extradata_size = static_cast<int>(m_description.size());
    }
    [[nodiscard]] const AVStream& get() const { return m_stream; }

private:
    std::vector<std::uint8_t> m_description;
    AVCodecParameters m_format{};
    AVStream m_stream{};
};

std::string textOf(const std::optional<std::uint32_t>& code) {
    if (!code) {
        return "none";
    }
    std::string text;
    for (unsigned shift = 32; shift > 0; shift -= 8) {
        text.push_back(static_cast<char>(*code >> (shift - 8)));
    }
    return text;
}

std::string video(AVCodecID codec, std::string_view stored, const char* container) {
    return textOf(codeOfVideo(Stream(codec, stored).get(), container));
}

std::string audio(AVCodecID codec, std::string_view stored = std::string_view("\0\0\0\0", 4)) {
    return textOf(codeOfAudio(Stream(codec, stored).get()));
}

std::string aac(std::vector<std::uint8_t> description) {
    Stream stream(AV_CODEC_ID_AAC);
    stream.setDescription(std::move(description));
    return textOf(codeOfAudio(stream.get()));
}

std::string aacOfProfile(int profile) {
    Stream stream(AV_CODEC_ID_AAC);
    stream.format().profile = profile;
    return textOf(codeOfAudio(stream.get()));
}

} // namespace

TEST(CodecCode, OfVideoInMp4IsTheStoredOne) {
    EXPECT_EQ(video(AV_CODEC_ID_H264, "avc3", mp4), "avc3");
    EXPECT_EQ(video(AV_CODEC_ID_HEVC, "dvh1", mp4), "dvh1");
    EXPECT_EQ(video(AV_CODEC_ID_NONE, std::string_view("\xA9x\0y", 4), mp4),
              std::string("\xA9x\0y", 4));
    EXPECT_EQ(video(AV_CODEC_ID_H264, std::string_view("\0\0\0\0", 4), mp4), "avc1");
}

TEST(CodecCode, OfVideoElsewhereIsTheTables) {
    EXPECT_EQ(video(AV_CODEC_ID_H264, "H264", "avi"), "avc1");
    EXPECT_EQ(video(AV_CODEC_ID_MPEG4, "XVID", "avi"), "mp4v");
    EXPECT_EQ(video(AV_CODEC_ID_MJPEG, "MJPG", "avi"), "dmb1");
    EXPECT_EQ(video(AV_CODEC_ID_MJPEG, "MJPG", "matroska,webm"), "jpeg");
    EXPECT_EQ(video(AV_CODEC_ID_RAWVIDEO, "UYVY", "avi"), "2vuy");
    EXPECT_EQ(video(AV_CODEC_ID_RAWVIDEO, "YUY2", "avi"), "yuvs");
    EXPECT_EQ(video(AV_CODEC_ID_RAWVIDEO, "I420", "avi"), "I420");
}

TEST(CodecCode, OutsideTheTablesIsWhatTheFileHas) {
    EXPECT_EQ(video(AV_CODEC_ID_WMV3, "WMV3", "asf"), "WMV3");
    EXPECT_EQ(video(AV_CODEC_ID_FLV1, std::string_view("\2\0\0\0", 4), "flv"), "none");
    EXPECT_EQ(audio(AV_CODEC_ID_VORBIS), "none");
    EXPECT_EQ(audio(AV_CODEC_ID_WMAV2, std::string_view("\x61\1\0\0", 4)), "none");
    EXPECT_EQ(audio(AV_CODEC_ID_NONE, "ac-4"), "ac-4");
}

TEST(CodecCode, OfDigitalVideoGoesByItsHeight) {
    Stream stream(AV_CODEC_ID_DVVIDEO, "dvsd");
    stream.format().height = 480;
    EXPECT_EQ(textOf(codeOfVideo(stream.get(), "avi")), "dvc ");
    stream.format().height = 576;
    EXPECT_EQ(textOf(codeOfVideo(stream.get(), "avi")), "dvcp");
}

TEST(CodecCode, OfSoundIsTheTablesWhateverIsStored) {
    EXPECT_EQ(audio(AV_CODEC_ID_MP3, "mp4a"), ".mp3");
    EXPECT_EQ(audio(AV_CODEC_ID_AC3), "ac-3");
    EXPECT_EQ(audio(AV_CODEC_ID_PCM_S16LE, "sowt"), "lpcm");
    EXPECT_EQ(audio(AV_CODEC_ID_PCM_F64BE, "fl64"), "lpcm");
    EXPECT_EQ(audio(AV_CODEC_ID_PCM_DVD), "lpcm");
    EXPECT_EQ(audio(AV_CODEC_ID_PCM_ALAW), "alaw");
    EXPECT_EQ(audio(AV_CODEC_ID_AMR_WB, "sawb"), "sawb");
    EXPECT_EQ(audio(AV_CODEC_ID_ADPCM_IMA_QT, "ima4"), "ima4");
    EXPECT_EQ(audio(AV_CODEC_ID_ADPCM_MS), std::string("ms\0\2", 4));
    EXPECT_EQ(audio(AV_CODEC_ID_GSM_MS), std::string("ms\0\x31", 4));
}

TEST(CodecCode, OfAacGoesByItsDescription) {
    EXPECT_EQ(aac({0x12, 0x10}), "aac ");
    EXPECT_EQ(aac({0x2B, 0x92, 0x08, 0x00}), "aach");
    EXPECT_EQ(aac({0xEB, 0x8A, 0x08, 0x00}), "aacp");
    EXPECT_EQ(aac({0xB8, 0x00}), "aacl");
    EXPECT_EQ(aac({0xF8, 0xE0}), "aace");
    EXPECT_EQ(aac({0xF9, 0x40}), "usac");
    EXPECT_EQ(aac({0x2B}), "aac ");
}

TEST(CodecCode, OfAacWithoutDescriptionGoesByItsProfile) {
    EXPECT_EQ(aacOfProfile(FF_PROFILE_UNKNOWN), "aac ");
    EXPECT_EQ(aacOfProfile(FF_PROFILE_AAC_LOW), "aac ");
    EXPECT_EQ(aacOfProfile(FF_PROFILE_AAC_HE), "aach");
    EXPECT_EQ(aacOfProfile(FF_PROFILE_AAC_HE_V2), "aacp");
}
