// SPDX-License-Identifier: Apache-2.0
// What is read of films and recordings that other programs have made; they are made by
// tests/samples/make-media-samples.
#include "platform/linux/av/AvReader.h"

#include "platform/linux/Descriptor.h"
#include "platform/linux/worker/AssetQuestion.h"
#include "tests/unit/support/AssetDescription.h"
#include "tests/unit/support/ByteWriter.h"
#include "tests/unit/support/MediaSamples.h"
#include "tests/unit/support/MemoryFile.h"
#include "tests/unit/support/OpenWatch.h"
#include "tests/unit/support/ShellCommand.h"
#include "tests/unit/support/TemporaryFolder.h"
#include "tests/unit/support/WorkingFolder.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <limits>
#include <map>
#include <set>
#include <sstream>
#include <string>
#include <vector>

#include <fcntl.h>
#include <unistd.h>

#include <gtest/gtest.h>

namespace {

using platform::MediaAssetProperties;
using platform::av::readMediaAsset;

std::string pathOf(const char* name) {
    return std::filesystem::path(QM_TEST_MEDIA_SAMPLES) / name;
}

std::optional<MediaAssetProperties> readSample(const char* name, bool wantsMetadata = true) {
    const platform::Descriptor file(::open(pathOf(name).c_str(), O_RDONLY | O_CLOEXEC));
    EXPECT_GE(file.number(), 0) << name;
    return readMediaAsset(file.number(), wantsMetadata);
}

std::string contentsOf(const char* name) {
    std::ifstream file(pathOf(name), std::ios::binary);
    return {std::istreambuf_iterator<char>(file), {}};
}

std::optional<MediaAssetProperties> readBytes(std::string_view bytes) {
    return readMediaAsset(MemoryFile(bytes).descriptor(), true);
}

// What another program tells of a file.
struct Told {
    std::optional<double> duration;
    std::vector<std::string> pictures; ///< width, height and shape of pixels of each track
    std::vector<std::string> sounds;   ///< rate and number of channels of each track
};

// The numbers of tracks as they are compared.
std::vector<std::string> soundsOf(const MediaAssetProperties& asset) {
    std::vector<std::string> sounds;
    for (const auto& track : asset.audioTracks) {
        const auto stream =
            track.streamDescription.value_or(MediaAssetProperties::AudioTrack::StreamDescription());
        sounds.push_back(platform::format("{:.0f} {}", stream.sampleRate, stream.channels));
    }
    return sounds;
}

Told toldByFfprobe(const char* name) {
    std::istringstream lines(outputOfShell("ffprobe -v error -of default=nw=1 -show_entries "
                                           "format=duration:stream=sample_rate,channels '" +
                                           pathOf(name) + "'"));
    Told told;
    std::string rate;
    for (std::string line; std::getline(lines, line);) {
        const std::string value = line.substr(line.find('=') + 1);
        if (line == "duration=N/A") {
            continue;
        }
        if (line.starts_with("duration=")) {
            told.duration = std::stod(value);
        } else if (line.starts_with("sample_rate=")) {
            rate = value;
        } else if (line.starts_with("channels=")) {
            told.sounds.push_back(std::string(rate).append(" ").append(value));
        }
    }
    return told;
}

// Of all samples at once.
std::map<std::string, Told> toldByMediainfo() {
    const TemporaryFolder folder;
    const std::string form = folder.file("form", "General;F|%FileName%.%FileExtension%|\n"
                                                 "Video;V|%Width% %Height% %PixelAspectRatio%|\n"
                                                 "Audio;A|%SamplingRate% %Channel(s)%|\n");
    std::istringstream words(outputOfShell("mediainfo --Inform='file://" + form + "' " +
                                           std::string(QM_TEST_MEDIA_SAMPLES) + "/*"));
    std::map<std::string, Told> all;
    Told* told = nullptr;
    std::string kind;
    for (std::string value; std::getline(words, kind, '|') && std::getline(words, value, '|');) {
        if (kind == "F") {
            told = &all[value];
        } else if (told != nullptr) {
            // Some rates have a fraction of nothing.
            if (const auto fraction = value.find(".000 "); kind == "A" && fraction != value.npos) {
                value.erase(fraction, std::string_view(".000").size());
            }
            (kind == "V" ? told->pictures : told->sounds).push_back(value);
        }
    }
    return all;
}

bool isOneOf(const char* name, std::initializer_list<std::string_view> names) {
    return std::ranges::find(names, std::string_view(name)) != names.end();
}

platform::worker::MediaWorker::Settings realWorker() {
    platform::worker::MediaWorker::Settings settings;
    settings.program = QM_TEST_AV_WORKER;
    settings.limits = {std::chrono::minutes(1), std::chrono::minutes(1), std::chrono::minutes(1)};
    return settings;
}

class AvReader : public ::testing::Test {
protected:
    static void SetUpTestSuite() { platform::av::prepareReader(); }
};

} // namespace

TEST_F(AvReader, TellsOfEachSampleWhatIsInIt) {
    for (const MediaSample& sample : mediaSamples) {
        EXPECT_EQ(AssetDescription::of(readSample(sample.name)), sample.description) << sample.name;
    }
}

TEST_F(AvReader, HasAnExpectationForEachSample) {
    std::set<std::string> expected;
    for (const MediaSample& sample : mediaSamples) {
        expected.insert(sample.name);
    }
    std::set<std::string> found;
    for (const auto& entry : std::filesystem::directory_iterator(QM_TEST_MEDIA_SAMPLES)) {
        found.insert(entry.path().filename());
    }
    EXPECT_EQ(found, expected);
    EXPECT_EQ(expected.size(), mediaSamples.size());
}

TEST_F(AvReader, ReadsItemsOnlyWhenAsked) {
    for (const MediaSample& sample : mediaSamples) {
        auto whole = readSample(sample.name);
        ASSERT_TRUE(whole) << sample.name;
        whole->commonMetadata.clear();
        EXPECT_EQ(whole, readSample(sample.name, false)) << sample.name;
    }
}

// Behind a tag, the largest place that the library can ask for lies beyond what can be counted.
TEST_F(AvReader, StaysWhereItIsWhenItCannotGoOn) {
    constexpr std::size_t descriptionEnd = 52;
    constexpr std::size_t headSize = 12;
    const std::string tag("ID3\4\0\0\0\0\0\0", 10);
    const std::string plain = contentsOf("plain-caf.alac");
    const std::uint64_t size =
        std::numeric_limits<std::int64_t>::max() - (descriptionEnd + headSize);
    const std::string endless = ByteWriter().text("free").big(size, 8).bytes();
    const auto found = readBytes(tag + plain);
    ASSERT_TRUE(found && found->audioTracks.size() == 1);
    EXPECT_EQ(
        readBytes(tag + plain.substr(0, descriptionEnd) + endless + plain.substr(descriptionEnd)),
        found);
}

TEST_F(AvReader, IsAsGoodInTheConfinedProcess) {
    platform::worker::MediaWorker worker(realWorker());
    for (const MediaSample& sample : mediaSamples) {
        EXPECT_EQ(AssetDescription::of(mediaAssetProperties(worker, pathOf(sample.name), true)),
                  sample.description)
            << sample.name;
        EXPECT_EQ(mediaAssetProperties(worker, pathOf(sample.name), false),
                  readSample(sample.name, false))
            << sample.name;
    }
}

TEST_F(AvReader, AgreesWithFfprobe) {
    for (const MediaSample& sample : mediaSamples) {
        const auto found = readSample(sample.name, false);
        const Told told = toldByFfprobe(sample.name);
        ASSERT_TRUE(found && found->duration.has_value() == told.duration.has_value())
            << sample.name;
        // To a length that the file says, it adds what comes before the first picture.
        const double tolerance = isOneOf(sample.name, {"wmv2.wmv"}) ? 0.05 : 0.01;
        EXPECT_NEAR(found->duration.value_or(0), told.duration.value_or(0), tolerance)
            << sample.name;
        // The tracks of transport streams are told twice, once with their programme.
        const auto ours = soundsOf(*found);
        const bool isTwice = std::string_view(sample.name).ends_with(".ts");
        EXPECT_EQ(told.sounds.size(), ours.size() * (isTwice ? 2 : 1)) << sample.name;
        EXPECT_TRUE(std::equal(ours.begin(), ours.end(), told.sounds.begin())) << sample.name;
    }
}

TEST_F(AvReader, AgreesWithMediainfo) {
    auto all = toldByMediainfo();
    EXPECT_EQ(all.size(), mediaSamples.size());
    std::size_t pictures = 0;
    std::size_t sounds = 0;
    for (const MediaSample& sample : mediaSamples) {
        const auto found = readSample(sample.name, false);
        const Told& told = all[sample.name];
        // It believes what the first bytes of a packet say of channels, against the sound itself.
        if (!isOneOf(sample.name, {"h264.flv"})) {
            EXPECT_EQ(soundsOf(*found), told.sounds) << sample.name;
        }
        ASSERT_EQ(found->videoTracks.size(), told.pictures.size()) << sample.name;
        for (std::size_t i = 0; i < told.pictures.size(); ++i) {
            // It leaves out a size that it does not know.
            std::istringstream numbers(isOneOf(sample.name, {"undescribed.mp4"})
                                           ? "0 0" + told.pictures[i]
                                           : told.pictures[i]);
            double width = 0;
            double height = 0;
            double shape = 0;
            ASSERT_TRUE(numbers >> width >> height >> shape) << sample.name;
            EXPECT_NEAR(found->videoTracks[i].naturalWidth, width * shape, 1) << sample.name;
            EXPECT_EQ(found->videoTracks[i].naturalHeight, height) << sample.name;
        }
        pictures += told.pictures.size();
        sounds += told.sounds.size();
    }
    EXPECT_GT(pictures, 35U);
    EXPECT_GT(sounds, 50U);
}

TEST_F(AvReader, AgreesWithOthersOnItemsThatAreThereOnce) {
    for (const char* name : {"tagged.mp3", "aac.m4a", "info.wav", "wma.wma"}) {
        const auto found = readSample(name);
        for (const auto key : {"title", "artist", "album"}) {
            const std::string theirs =
                outputOfShell(std::string("ffprobe -v error -of default=nw=1:nk=1 -show_entries "
                                          "format_tags=") +
                              key + " '" + pathOf(name) + "'");
            EXPECT_TRUE(AssetDescription::of(found).find(std::string(key) + "=" +
                                                         theirs.substr(0, theirs.find('\n'))) !=
                        std::string::npos)
                << name << theirs;
        }
    }
}

TEST_F(AvReader, ReadsBytesOfNothingAsNothing) {
    for (const std::string_view bytes : {"", "I", "text", "ID3", "RIFF1234WAVE", "OggS", "fLaC",
                                         "%PDF-1.7", "MThd\0\0\0\6\0\0\0\1\0\x60"}) {
        const auto found = readBytes(bytes);
        EXPECT_TRUE(!found || found->videoTracks.empty()) << bytes;
    }
    EXPECT_EQ(readBytes(""), std::nullopt);
    EXPECT_EQ(readBytes(std::string(100'000, '\0')), std::nullopt);
    // The mark of a packet in a transport stream is a letter.
    for (std::size_t place = 0; place < 200; place += 9) {
        std::string text(250, 'a');
        text[place] = 'G';
        EXPECT_EQ(readBytes(text), std::nullopt) << place;
    }
}

TEST_F(AvReader, ReadsNothingButRegularFiles) {
    std::array<int, 2> ends{};
    ASSERT_EQ(::pipe2(ends.data(), O_CLOEXEC), 0);
    const platform::Descriptor reading(ends[0]);
    const platform::Descriptor writing(ends[1]);
    EXPECT_EQ(readMediaAsset(reading.number(), true), std::nullopt);
    EXPECT_EQ(readMediaAsset(-1, true), std::nullopt);
}

TEST_F(AvReader, OpensNothingThatAFileNames) {
    const TemporaryFolder folder;
    const TemporaryFolder others;
    const std::string other = others.file("other.ts", contentsOf("h264.ts"));
    const OpenWatch watch(others.path());
    // Some names are only followed when they are harmless, and these start from where one is.
    const WorkingFolder here(others.path());
    const std::string harmless = "ffconcat version 1.0\nfile other.ts\n";
    const std::string list = "ffconcat version 1.0\nfile '" + other + "'\n";
    const std::string playlist = "#EXTM3U\n#EXT-X-TARGETDURATION:10\n#EXT-X-VERSION:3\n"
                                 "#EXTINF:1.0,\n" +
                                 other + "\n#EXT-X-ENDLIST\n";
    const std::string plain = "#EXTM3U\n" + other + "\n";
    const std::string session = "v=0\no=- 0 0 IN IP4 127.0.0.1\ns=x\nc=IN IP4 127.0.0.1\nt=0 0\n"
                                "m=video 5004 RTP/AVP 96\na=rtpmap:96 H264/90000\n";
    const std::string manifest = "<?xml version=\"1.0\"?><MPD xmlns=\"urn:mpeg:dash:schema:mpd:"
                                 "2011\" type=\"static\"><Period><AdaptationSet><Representation "
                                 "id=\"1\"><BaseURL>" +
                                 other +
                                 "</BaseURL></Representation>"
                                 "</AdaptationSet></Period></MPD>";
    for (const std::string& text : {harmless, list, playlist, plain, session, manifest}) {
        EXPECT_EQ(readBytes(text), std::nullopt) << text;
        platform::worker::MediaWorker worker(realWorker());
        EXPECT_EQ(mediaAssetProperties(worker, folder.file("film.mp4", text), false), std::nullopt);
        EXPECT_FALSE(watch.hasSeenAny()) << text;
    }
    // It would have been seen.
    EXPECT_FALSE(std::ifstream(other).fail());
    EXPECT_TRUE(watch.hasSeenAny());
}

TEST_F(AvReader, HarmlessAreFilesThatAreCutOff) {
    constexpr std::size_t steps = 40;
    for (const MediaSample& sample : mediaSamples) {
        const std::string whole = contentsOf(sample.name);
        for (std::size_t step = 0; step < steps; ++step) {
            // More of them near the beginning.
            const double part = std::pow(static_cast<double>(step) / steps, 3);
            const auto size = static_cast<std::size_t>(part * static_cast<double>(whole.size()));
            const auto found = readBytes(std::string_view(whole).substr(0, size));
            EXPECT_TRUE(!found || !found->duration || *found->duration >= 0) << sample.name << size;
        }
    }
}

TEST_F(AvReader, TellsOfAnEmptyMovieThatItIsEmpty) {
    // A file type, and a movie of no tracks that lasts 0 of 1000 parts of a second.
    std::string movie = std::string("\0\0\0\x14"
                                    "ftypisom\0\0\2\0isom\0\0\0\x74moov\0\0\0\x6Cmvhd",
                                    36) +
                        std::string(12, '\0') + std::string("\0\0\3\xE8", 4);
    movie.resize(20 + 0x74, '\0');
    EXPECT_EQ(AssetDescription::of(readBytes(movie)), "0.00 s");
}
