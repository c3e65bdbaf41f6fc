// SPDX-License-Identifier: Apache-2.0
#include "platform/linux/av/AvTracks.h"

#include "platform/linux/av/CodecCode.h"
#include "platform/linux/av/FFmpeg.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstring>
#include <span>
#include <string_view>

namespace platform::av {
namespace {

using VideoTrack = MediaAssetProperties::VideoTrack;
using AudioTrack = MediaAssetProperties::AudioTrack;
using FormatDescription = MediaAssetProperties::FormatDescription;

std::span<AVStream* const> streamsOf(const AVFormatContext& context) {
    return {context.streams, context.nb_streams};
}

bool isAudio(const AVStream& stream) {
    return stream.codecpar->codec_type == AVMEDIA_TYPE_AUDIO;
}

// A cover is stored as if it were a film of one picture.
bool isVideo(const AVStream& stream) {
    return stream.codecpar->codec_type == AVMEDIA_TYPE_VIDEO &&
           (stream.disposition & AV_DISPOSITION_ATTACHED_PIC) == 0;
}

bool isPositive(const AVRational& number) {
    return number.num > 0 && number.den > 0;
}

// The frames of these say themselves what they are, and headers before them need not be right.
bool isToldByFrames(const AVCodecParameters& format) {
    return format.codec_id == AV_CODEC_ID_MP3 || format.codec_id == AV_CODEC_ID_MP2;
}

bool lacksFacts(const AVStream& stream) {
    const AVCodecParameters& format = *stream.codecpar;
    if (isAudio(stream)) {
        return format.sample_rate <= 0 || format.ch_layout.nb_channels <= 0 ||
               isToldByFrames(format);
    }
    return isVideo(stream) &&
           (format.width <= 0 || format.height <= 0 || !isPositive(stream.avg_frame_rate));
}

// The turn of a track as FFmpeg has it: rows of three numbers, those of interest with 16 bits
// behind the point.
VideoTrack::Transform transformOf(const AVStream& stream) {
    constexpr std::size_t numbers = 9;
    constexpr double one = 65536;
    std::size_t size = 0;
    const auto* const data = ::av_stream_get_side_data(&stream, AV_PKT_DATA_DISPLAYMATRIX, &size);
    if (data == nullptr || size < numbers * sizeof(std::int32_t)) {
        return {};
    }
    std::array<std::int32_t, numbers> matrix{};
    std::memcpy(matrix.data(), data, sizeof matrix);
    return {matrix[0] / one, matrix[1] / one, matrix[3] / one, matrix[4] / one};
}

// How much wider pixels are than high. Where a turn stretches the picture, FFmpeg gives that
// stretching as the shape of pixels as well; it counts once.
double pixelShape(AVFormatContext& context, AVStream& stream, const VideoTrack::Transform& turn) {
    constexpr double tolerance = 0.001;
    const AVRational ratio = ::av_guess_sample_aspect_ratio(&context, &stream, nullptr);
    if (!isPositive(ratio)) {
        return 1;
    }
    const double shape = ::av_q2d(ratio);
    const double stretching = std::hypot(turn.a, turn.c) / std::hypot(turn.b, turn.d);
    const bool isStretching = std::abs(stretching - 1) > tolerance &&
                              std::abs(stretching - shape) <= tolerance * stretching;
    return isStretching ? 1 : shape;
}

// One picture has no rate, however long it is shown.
float frameRateOf(const AVStream& stream) {
    const AVRational rate =
        isPositive(stream.avg_frame_rate) ? stream.avg_frame_rate : stream.r_frame_rate;
    return stream.nb_frames != 1 && isPositive(rate) ? static_cast<float>(::av_q2d(rate)) : 0;
}

// Elsewhere a track that nothing is known of has a name for its format at least.
bool isDescribed(const AVFormatContext& context, const AVStream& stream) {
    const AVCodecParameters& format = *stream.codecpar;
    return format.codec_id != AV_CODEC_ID_NONE || format.codec_tag != 0 ||
           !isOfMp4Family(context.iformat->name);
}

VideoTrack videoTrackOf(AVFormatContext& context, AVStream& stream) {
    VideoTrack track;
    track.preferredTransform = transformOf(stream);
    track.naturalWidth =
        std::max(stream.codecpar->width, 0) * pixelShape(context, stream, track.preferredTransform);
    track.naturalHeight = std::max(stream.codecpar->height, 0);
    track.nominalFrameRate = frameRateOf(stream);
    if (isDescribed(context, stream)) {
        track.formatDescription = FormatDescription{codeOfVideo(stream, context.iformat->name)};
    }
    return track;
}

// Those of the sound itself, where it is not compressed; formats have them also for what is.
std::uint32_t bitsPerChannel(const AVStream& stream) {
    constexpr int bitsPerByte = 8;
    if (!isPcm(stream)) {
        return 0;
    }
    const AVCodecParameters& format = *stream.codecpar;
    const int stored = ::av_get_exact_bits_per_sample(format.codec_id);
    const int used = format.bits_per_coded_sample;
    // Fewer bits than the bytes have room for; without the former, what the format says.
    const bool isTold = used > 0 && (stored <= 0 || (used < stored && used > stored - bitsPerByte));
    return static_cast<std::uint32_t>(std::max(isTold ? used : stored, 0));
}

// Of the decoded sound.
std::uint32_t channelsOf(const AVStream& stream) {
    const auto stored = static_cast<std::uint32_t>(stream.codecpar->ch_layout.nb_channels);
    return stored == 1 && isParametricStereo(stream) ? 2 : stored;
}

AudioTrack audioTrackOf(const AVFormatContext& context, const AVStream& stream) {
    const AVCodecParameters& format = *stream.codecpar;
    AudioTrack track;
    if (isDescribed(context, stream)) {
        track.formatDescription = FormatDescription{codeOfAudio(stream)};
    }
    if (format.sample_rate > 0 && format.ch_layout.nb_channels > 0) {
        track.streamDescription = {static_cast<double>(format.sample_rate), channelsOf(stream),
                                   bitsPerChannel(stream)};
    }
    return track;
}

std::optional<double> longestStream(const AVFormatContext& context) {
    std::optional<double> longest;
    for (const AVStream* stream : streamsOf(context)) {
        if (stream->duration != AV_NOPTS_VALUE && stream->duration >= 0 &&
            isPositive(stream->time_base)) {
            const double seconds =
                static_cast<double>(stream->duration) * ::av_q2d(stream->time_base);
            longest = std::max(longest.value_or(0), seconds);
        }
    }
    return longest;
}

} // namespace

bool lacksFacts(const AVFormatContext& context) {
    // Some formats have no headers: streams are known once they are met.
    return (context.ctx_flags & AVFMTCTX_NOHEADER) != 0 || durationOf(context).value_or(0) <= 0 ||
           std::ranges::any_of(streamsOf(context),
                               [](const AVStream* stream) { return lacksFacts(*stream); });
}

std::optional<double> durationOf(const AVFormatContext& context) {
    if (context.duration != AV_NOPTS_VALUE && context.duration > 0) {
        return static_cast<double>(context.duration) / AV_TIME_BASE;
    }
    const auto longest = longestStream(context);
    const bool isKnown = context.duration == 0;
    return longest || !isKnown ? longest : std::optional<double>(0);
}

std::optional<double> probedDurationOf(const AVFormatContext& context) {
    const std::string_view container = context.iformat->name;
    const bool isFromRate = context.duration_estimation_method == AVFMT_DURATION_FROM_BITRATE;
    const bool isGuess = isFromRate && container != "mp3" && container != "aac" &&
                         !std::ranges::all_of(streamsOf(context), [](const AVStream* stream) {
                             return isPcm(*stream);
                         });
    return isGuess ? std::nullopt : durationOf(context);
}

void appendTracks(AVFormatContext& context, MediaAssetProperties& asset) {
    for (AVStream* stream : streamsOf(context)) {
        if (isVideo(*stream)) {
            asset.videoTracks.push_back(videoTrackOf(context, *stream));
        } else if (isAudio(*stream)) {
            asset.audioTracks.push_back(audioTrackOf(context, *stream));
        }
    }
}

} // namespace platform::av
