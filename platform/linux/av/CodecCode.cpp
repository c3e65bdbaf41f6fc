// SPDX-License-Identifier: Apache-2.0
#include "platform/linux/av/CodecCode.h"

#include "platform/linux/FourCharCode.h"
#include "platform/linux/av/FFmpeg.h"

#include <algorithm>
#include <array>
#include <span>
#include <string_view>

namespace platform::av {
namespace {

using namespace std::string_view_literals;
using FourCharCode = MediaAssetProperties::FourCharCode;
using Code = std::optional<FourCharCode>;

struct Row {
    AVCodecID codec;
    std::string_view characters;
};

constexpr std::array videoCodes{
    Row{AV_CODEC_ID_H264, "avc1"},       Row{AV_CODEC_ID_HEVC, "hvc1"},
    Row{AV_CODEC_ID_MPEG4, "mp4v"},      Row{AV_CODEC_ID_MPEG2VIDEO, "mp2v"},
    Row{AV_CODEC_ID_MPEG1VIDEO, "mp1v"}, Row{AV_CODEC_ID_AV1, "av01"},
    Row{AV_CODEC_ID_VP9, "vp09"},        Row{AV_CODEC_ID_VP8, "vp08"},
    Row{AV_CODEC_ID_H263, "h263"},       Row{AV_CODEC_ID_H263P, "h263"},
    Row{AV_CODEC_ID_SVQ1, "SVQ1"},       Row{AV_CODEC_ID_SVQ3, "SVQ3"},
    Row{AV_CODEC_ID_MJPEG, "jpeg"},      Row{AV_CODEC_ID_PNG, "png "},
    Row{AV_CODEC_ID_TIFF, "tiff"},       Row{AV_CODEC_ID_QTRLE, "rle "},
    Row{AV_CODEC_ID_CINEPAK, "cvid"},    Row{AV_CODEC_ID_V210, "v210"},
};

// Formats of Windows' wave files have two letters and the number of the format.
constexpr std::array audioCodes{
    Row{AV_CODEC_ID_MP1, ".mp1"},
    Row{AV_CODEC_ID_MP2, ".mp2"},
    Row{AV_CODEC_ID_MP3, ".mp3"},
    Row{AV_CODEC_ID_ALAC, "alac"},
    Row{AV_CODEC_ID_FLAC, "flac"},
    Row{AV_CODEC_ID_OPUS, "opus"},
    Row{AV_CODEC_ID_AC3, "ac-3"},
    Row{AV_CODEC_ID_EAC3, "ec-3"},
    Row{AV_CODEC_ID_PCM_MULAW, "ulaw"},
    Row{AV_CODEC_ID_PCM_ALAW, "alaw"},
    Row{AV_CODEC_ID_AMR_NB, "samr"},
    Row{AV_CODEC_ID_AMR_WB, "sawb"},
    Row{AV_CODEC_ID_ADPCM_IMA_QT, "ima4"},
    Row{AV_CODEC_ID_MACE3, "MAC3"},
    Row{AV_CODEC_ID_MACE6, "MAC6"},
    Row{AV_CODEC_ID_QDM2, "QDM2"},
    Row{AV_CODEC_ID_ADPCM_MS, "ms\0\x02"sv},
    Row{AV_CODEC_ID_ADPCM_IMA_WAV, "ms\0\x11"sv},
    Row{AV_CODEC_ID_GSM, "agsm"},
    Row{AV_CODEC_ID_GSM_MS, "ms\0\x31"sv},
    Row{AV_CODEC_ID_DTS, "dtsc"},
};

template <std::size_t size>
Code find(const std::array<Row, size>& table, AVCodecID codec) {
    const auto* const row = std::ranges::find(table, codec, &Row::codec);
    return row == table.end() ? std::nullopt : Code(fourCharCode(row->characters));
}

// FFmpeg keeps the first character in the least significant byte.
FourCharCode storedCode(const AVCodecParameters& format) {
    FourCharCode result = 0;
    for (unsigned shift = 0; shift < 32; shift += 8) {
        result = (result << 8U) | ((format.codec_tag >> shift) & 0xFFU);
    }
    return result;
}

// Where the container has numbers instead of characters there is no code.
Code storedCharacters(const AVCodecParameters& format) {
    const FourCharCode stored = storedCode(format);
    for (unsigned shift = 0; shift < 32; shift += 8) {
        const unsigned character = (stored >> shift) & 0xFFU;
        if (character < ' ' || character > '~') {
            return std::nullopt;
        }
    }
    return stored;
}

// Digital video with the height of the American pictures, or of the European ones.
Code codeOfDigitalVideo(const AVCodecParameters& format) {
    constexpr int americanHeight = 480;
    return format.height == americanHeight ? fourCharCode("dvc ") : fourCharCode("dvcp");
}

// Pictures without compression have one code for each layout; Windows has others.
Code codeOfRawVideo(const AVCodecParameters& format) {
    const Code stored = storedCharacters(format);
    if (stored == fourCharCode("UYVY")) {
        return fourCharCode("2vuy");
    }
    return stored == fourCharCode("YUY2") ? fourCharCode("yuvs") : stored;
}

// The kind of AAC, by the first bits of its description (ISO/IEC 14496-3, AudioSpecificConfig):
// five of them, or six more behind five that are set. Two bytes at least.
unsigned aacObjectType(std::span<const std::uint8_t> description) {
    constexpr unsigned escape = 31;
    constexpr unsigned firstEscaped = 32;
    const unsigned bits = description[0] * 256U + description[1];
    const unsigned type = bits >> 11U;
    return type == escape ? firstEscaped + ((bits >> 5U) & 0x3FU) : type;
}

constexpr unsigned parametricStereo = 29;

unsigned aacObjectType(const AVCodecParameters& format) {
    // Profiles as FFmpeg counts them are one less than object types.
    return format.extradata != nullptr && format.extradata_size > 1
               ? aacObjectType(
                     std::span(format.extradata, static_cast<std::size_t>(format.extradata_size)))
               : static_cast<unsigned>(format.profile) + 1;
}

bool isAac(const AVCodecParameters& format) {
    return format.codec_id == AV_CODEC_ID_AAC || format.codec_id == AV_CODEC_ID_AAC_LATM;
}

FourCharCode codeOfAac(const AVCodecParameters& format) {
    switch (aacObjectType(format)) {
    case 5: return fourCharCode("aach");
    case parametricStereo: return fourCharCode("aacp");
    case 23: return fourCharCode("aacl");
    case 39: return fourCharCode("aace");
    case 42: return fourCharCode("usac");
    default: return fourCharCode("aac ");
    }
}

} // namespace

Code codeOfVideo(const AVStream& stream, std::string_view container) {
    const AVCodecParameters& format = *stream.codecpar;
    if (isOfMp4Family(container) && format.codec_tag != 0) {
        return storedCode(format);
    }
    switch (format.codec_id) {
    case AV_CODEC_ID_DVVIDEO: return codeOfDigitalVideo(format);
    case AV_CODEC_ID_RAWVIDEO: return codeOfRawVideo(format);
    case AV_CODEC_ID_MJPEG:
        if (container == "avi") {
            return fourCharCode("dmb1"); // OpenDML's own form of it
        }
        break;
    default: break;
    }
    const Code known = find(videoCodes, format.codec_id);
    return known ? known : storedCharacters(format);
}

Code codeOfAudio(const AVStream& stream) {
    const AVCodecParameters& format = *stream.codecpar;
    if (isAac(format)) {
        return codeOfAac(format);
    }
    if (const Code known = find(audioCodes, format.codec_id)) {
        return known;
    }
    return isPcm(stream) ? fourCharCode("lpcm") : storedCharacters(format);
}

bool isParametricStereo(const AVStream& stream) {
    return isAac(*stream.codecpar) && aacObjectType(*stream.codecpar) == parametricStereo;
}

bool isOfMp4Family(std::string_view container) {
    return container.starts_with("mov,");
}

// FFmpeg's numbers of these formats follow each other.
bool isPcm(const AVStream& stream) {
    const AVCodecID codec = stream.codecpar->codec_id;
    return codec >= AV_CODEC_ID_FIRST_AUDIO && codec < AV_CODEC_ID_ADPCM_IMA_QT;
}

} // namespace platform::av
