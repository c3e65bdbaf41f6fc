// SPDX-License-Identifier: Apache-2.0
#include "platform/linux/av/AvInput.h"

#include "platform/linux/av/FFmpeg.h"

#include <algorithm>
#include <ctime>
#include <limits>
#include <span>
#include <string_view>
#include <utility>

namespace platform::av {
namespace {

// The formats that files with the known extensions have. Others - playlists, lists of files,
// descriptions of streams - would make the library look for other files.
constexpr const char* formats = "mov,matroska,avi,asf,flv,mpeg,mpegts,mpegvideo,mp3,aac,loas,"
                                "flac,wav,w64,aiff,ogg,caf,amr,au";

// Only these are used to look into streams, none of which starts threads or loads anything.
constexpr const char* decoders =
    "aac,aac_latm,ac3,eac3,alac,amrnb,amrwb,dca,flac,mp1float,mp2float,mp3float,opus,vorbis,wmav1,"
    "wmav2,wmapro,wmalossless,adpcm_ms,adpcm_ima_wav,adpcm_ima_qt,adpcm_swf,nellymoser,speex,"
    "flv,h263,h264,hevc,mjpeg,mpeg1video,mpeg2video,mpeg4,msmpeg4v1,msmpeg4v2,msmpeg4,svq1,svq3,"
    "theora,vc1,flashsv,flashsv2,vp6,vp6a,vp6f,vp8,vp9,wmv1,wmv2,wmv3,prores,dvvideo,cinepak";

constexpr int bufferSize = 32 << 10;
constexpr std::int64_t probedSize = 1 << 20;
constexpr int probedForFormat = 64 << 10;
constexpr std::int64_t probedTime = AV_TIME_BASE;
constexpr int maximumStreams = 64;
constexpr int maximumProbedPackets = 500;
// Well before the process that asked gives up, so that it gets what was found until then.
constexpr std::chrono::nanoseconds timeLimit = std::chrono::seconds(5);

std::chrono::nanoseconds processorTime() {
    timespec used{};
    ::clock_gettime(CLOCK_PROCESS_CPUTIME_ID, &used);
    return std::chrono::seconds(used.tv_sec) + std::chrono::nanoseconds(used.tv_nsec);
}

int refuseToOpen(AVFormatContext* /*context*/, AVIOContext** /*file*/, const char* /*url*/,
                 int /*flags*/, AVDictionary** /*options*/) {
    return AVERROR(EPERM);
}

// False where there is no memory for them: the library takes a list that is missing for no limit.
bool setLimits(AVFormatContext& context) {
    context.format_whitelist = ::av_strdup(formats);
    context.codec_whitelist = ::av_strdup(decoders);
    context.protocol_whitelist = ::av_strdup("none");
    context.io_open = refuseToOpen;
    context.probesize = probedSize;
    context.format_probesize = probedForFormat;
    context.max_analyze_duration = probedTime;
    context.max_streams = maximumStreams;
    context.max_probe_packets = maximumProbedPackets;
    return context.format_whitelist != nullptr && context.codec_whitelist != nullptr &&
           context.protocol_whitelist != nullptr;
}

// A few bytes, of any kind, are taken for a transport stream where one of them is a 'G'.
bool isGuess(const AVFormatContext& context) {
    constexpr int scoreOfFewBytes = 2;
    return context.probe_score <= scoreOfFewBytes &&
           std::string_view(context.iformat->name) == "mpegts";
}

// With a buffer of its own.
void freeFile(AVIOContext* file) {
    if (file != nullptr) {
        ::av_freep(static_cast<void*>(&file->buffer));
        ::avio_context_free(&file);
    }
}

} // namespace

std::unique_ptr<AvInput> AvInput::open(const OpenedFile& file, std::uint64_t start,
                                       std::vector<std::uint64_t> hidden) {
    std::unique_ptr<AvInput> input(new AvInput(file, start, std::move(hidden)));
    return input->openContext() ? std::move(input) : nullptr;
}

AvInput::AvInput(const OpenedFile& file, std::uint64_t start, std::vector<std::uint64_t> hidden)
    : m_file(file)
    , m_start(std::min(start, file.size()))
    , m_hidden(std::move(hidden))
    , m_position(m_start)
    , m_deadline(processorTime() + timeLimit) {}

AvInput::~AvInput() {
    if (m_context != nullptr) {
        AVIOContext* const file = m_context->pb;
        ::avformat_close_input(&m_context);
        freeFile(file);
    }
}

bool AvInput::openContext() {
    auto* const buffer = static_cast<unsigned char*>(::av_malloc(bufferSize));
    AVIOContext* const file = buffer == nullptr
                                  ? nullptr
                                  : ::avio_alloc_context(buffer, bufferSize, 0, this,
                                                         &AvInput::read, nullptr, &AvInput::seek);
    AVFormatContext* context = file == nullptr ? nullptr : ::avformat_alloc_context();
    if (context == nullptr) {
        freeFile(file);
        if (file == nullptr) {
            ::av_free(buffer);
        }
        return false;
    }
    context->pb = file;
    context->flags |= AVFMT_FLAG_CUSTOM_IO;
    context->interrupt_callback = {&AvInput::isLate, this};
    // Edit lists are for playing; applying them takes longer than all else in long films.
    AVDictionary* options = nullptr;
    ::av_dict_set(&options, "advanced_editlist", "0", 0);
    const bool isOpen =
        setLimits(*context) && ::avformat_open_input(&context, nullptr, nullptr, &options) >= 0;
    ::av_dict_free(&options);
    if (!isOpen) {
        // Nothing is left of the context where it could not be opened; the file is ours.
        ::avformat_free_context(context);
        freeFile(file);
        return false;
    }
    m_context = context;
    return !isGuess(*context);
}

void AvInput::probeStreams() {
    // Failure leaves what has been found until then.
    static_cast<void>(::avformat_find_stream_info(m_context, nullptr));
}

int AvInput::read(void* input, std::uint8_t* buffer, int size) {
    auto& self = *static_cast<AvInput*>(input);
    if (isLate(input) != 0) {
        return AVERROR_EXIT;
    }
    const auto space = std::as_writable_bytes(std::span(buffer, static_cast<std::size_t>(size)));
    const std::size_t count = self.m_file.readSome(self.m_position, space);
    self.hide(space.first(count));
    self.m_position += count;
    return count == 0 ? AVERROR_EOF : static_cast<int>(count);
}

// Makes boxes in what was read from the position on such that mean nothing.
void AvInput::hide(std::span<std::byte> bytes) const {
    constexpr std::string_view meaningless = "free";
    const std::uint64_t end = m_position + bytes.size();
    auto place = std::ranges::lower_bound(
        m_hidden, m_position < meaningless.size() ? 0 : m_position - meaningless.size() + 1);
    for (; place != m_hidden.end() && *place < end; ++place) {
        for (std::size_t i = 0; i < meaningless.size(); ++i) {
            const std::uint64_t offset = *place + i;
            if (offset >= m_position && offset < end) {
                bytes[static_cast<std::size_t>(offset - m_position)] =
                    static_cast<std::byte>(meaningless[i]);
            }
        }
    }
}

std::int64_t AvInput::seek(void* input, std::int64_t offset, int whence) {
    auto& self = *static_cast<AvInput*>(input);
    const auto size = static_cast<std::int64_t>(self.m_file.size() - self.m_start);
    std::int64_t origin = 0;
    switch (whence & ~AVSEEK_FORCE) {
    case AVSEEK_SIZE: return size;
    case SEEK_SET: break;
    case SEEK_CUR: origin = static_cast<std::int64_t>(self.m_position - self.m_start); break;
    case SEEK_END: origin = size; break;
    default: return AVERROR(EINVAL);
    }
    const auto start = static_cast<std::int64_t>(self.m_start);
    const bool isBefore = offset < -origin;
    if (isBefore || offset > std::numeric_limits<std::int64_t>::max() - origin - start) {
        return AVERROR(EINVAL);
    }
    self.m_position = static_cast<std::uint64_t>(start + origin + offset);
    return origin + offset;
}

int AvInput::isLate(void* input) {
    return processorTime() > static_cast<AvInput*>(input)->m_deadline ? 1 : 0;
}

} // namespace platform::av
