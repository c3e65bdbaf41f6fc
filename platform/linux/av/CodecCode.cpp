// SPDX-License-Identifier: Apache-2.0
#include "platform/linux/av/CodecCode.h"

#include "platform/linux/av/FFmpeg.h"

#include <algorithm>
#include <array>
#include <span>
#include <string_view>

namespace platform::av {
namespace {

using FourCharCode = MediaAssetProperties::FourCharCode;
using Code = std::optional<FourCharCode>;

constexpr FourCharCode code(std::string_view text) {
    FourCharCode result = 0;
    for (const char character : text) {
        result = (result << 8U) | static_cast<unsigned char>(character);
    }
    return result;
}

// Formats of Windows' wave files: two letters and the number of the format.
constexpr FourCharCode waveFormat(std::uint16_t number) {
    constexpr unsigned numberBits = 16;
    return code("ms") << numberBits | number;
}

struct Row {
    AVCodecID codec;
    FourCharCode code;
};

constexpr std::array videoCodes{
    Row{AV_CODEC_ID_H264, code("avc1")},       Row{AV_CODEC_ID_HEVC, code("hvc1")},
    Row{AV_CODEC_ID_MPEG4, code("mp4v")},      Row{AV_CODEC_ID_MPEG2VIDEO, code("mp2v")},
    Row{AV_CODEC_ID_MPEG1VIDEO, code("mp1v")}, Row{AV_CODEC_ID_AV1, code("av01")},
    Row{AV_CODEC_ID_VP9, code("vp09")},        Row{AV_CODEC_ID_VP8, code("vp08")},
    Row{AV_CODEC_ID_H263, code("h263")},       Row{AV_CODEC_ID_H263P, code("h263")},
    Row{AV_CODEC_ID_SVQ1, code("SVQ1")},       Row{AV_CODEC_ID_SVQ3, code("SVQ3")},
    Row{AV_CODEC_ID_MJPEG, code("jpeg")},      Row{AV_CODEC_ID_PNG, code("png ")},
    Row{AV_CODEC_ID_TIFF, code("tiff")},       Row{AV_CODEC_ID_QTRLE, code("rle ")},
    Row{AV_CODEC_ID_CINEPAK, code("cvid")},    Row{AV_CODEC_ID_V210, code("v210")},
};

constexpr std::array audioCodes{
    Row{AV_CODEC_ID_MP1, code(".mp1")},          Row{AV_CODEC_ID_MP2, code(".mp2")},
    Row{AV_CODEC_ID_MP3, code(".mp3")},          Row{AV_CODEC_ID_ALAC, code("alac")},
    Row{AV_CODEC_ID_FLAC, code("flac")},         Row{AV_CODEC_ID_OPUS, code("opus")},
    Row{AV_CODEC_ID_AC3, code("ac-3")},          Row{AV_CODEC_ID_EAC3, code("ec-3")},
    Row{AV_CODEC_ID_PCM_MULAW, code("ulaw")},    Row{AV_CODEC_ID_PCM_ALAW, code("alaw")},
    Row{AV_CODEC_ID_AMR_NB, code("samr")},       Row{AV_CODEC_ID_AMR_WB, code("sawb")},
    Row{AV_CODEC_ID_ADPCM_IMA_QT, code("ima4")}, Row{AV_CODEC_ID_MACE3, code("MAC3")},
    Row{AV_CODEC_ID_MACE6, code("MAC6")},        Row{AV_CODEC_ID_QDM2, code("QDM2")},
    Row{AV_CODEC_ID_ADPCM_MS, waveFormat(0x02)}, Row{AV_CODEC_ID_ADPCM_IMA_WAV, waveFormat(0x11)},
    Row{AV_CODEC_ID_GSM, code("agsm")},          Row{AV_CODEC_ID_GSM_MS, waveFormat(0x31)},
    Row{AV_CODEC_ID_DTS, code("dtsc")},
};

template <std::size_t size>
Code find(const std::array<Row, size>& table, AVCodecID codec) {
    const auto* const row = std::ranges::find(table, codec, &Row::codec);
    return row == table.end() ? std::nullopt : Code(row->code);
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
    return format.height == americanHeight ? code("dvc ") : code("dvcp");
}

// Pictures without compression have one code for each layout; Windows has others.
Code codeOfRawVideo(const AVCodecParameters& format) {
    const Code stored = storedCharacters(format);
    if (stored == code("UYVY")) {
        return code("2vuy");
    }
    return stored == code("YUY2") ? code("yuvs") : stored;
}

// The kind of AAC, by the first bits of its description (ISO/IEC 14496-3, AudioSpecificConfig):
// five of them, or six more behind five that are set.
unsigned aacObjectType(std::span<const std::uint8_t> description) {
    constexpr unsigned escape = 31;
    constexpr unsigned firstEscaped = 32;
    if (description.size() < 2) {
        return 0;
    }
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
    case 5: return code("aach");
    case parametricStereo: return code("aacp");
    case 23: return code("aacl");
    case 39: return code("aace");
    case 42: return code("usac");
    default: return code("aac ");
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
            return code("dmb1"); // OpenDML's own form of it
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
    return isPcm(stream) ? code("lpcm") : storedCharacters(format);
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
