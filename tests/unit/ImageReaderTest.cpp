// SPDX-License-Identifier: Apache-2.0
// What is read of image files that other programs have made; tests/samples/make-samples makes them.
#include "platform/linux/media/ImageReader.h"

#include "platform/linux/Descriptor.h"
#include "tests/unit/support/ImageDescription.h"
#include "tests/unit/support/MemoryFile.h"
#include "tests/unit/support/ShellCommand.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <set>
#include <sstream>
#include <string>
#include <vector>

#include <fcntl.h>

#include <gtest/gtest.h>
#include <linux/filter.h>
#include <linux/seccomp.h>
#include <sys/prctl.h>
#include <sys/syscall.h>
#include <sys/wait.h>

namespace {

using platform::ImageProperties;
using platform::media::readImage;

struct Sample {
    const char* name;
    const char* description;
};

constexpr std::array samples{
    Sample{"xmp.jpg",
           "12x8 8 RGB count=1 tiff model=Camera & lens copyright=© Someone exif f=4 iso=400 "
           "date=2023:07:14 18:30:05 gps latitude=48.5 ref=N longitude=2.25 ref=W"},
    Sample{"xmp.png",
           "12x8 8 Gray alpha=no count=1 tiff model=Camera & lens copyright=© Someone exif f=4 "
           "iso=400 date=2023:07:14 18:30:05 gps latitude=48.5 ref=N longitude=2.25 ref=W"},
    Sample{
        "xmp.tif",
        "12x8 16 RGB dpi=300x150 alpha=no count=1 tiff model=Camera & lens copyright=© Someone "
        "exif f=4 iso=400 date=2023:07:14 18:30:05 gps latitude=48.5 ref=N longitude=2.25 ref=W"},
    Sample{"xmp.webp",
           "12x8 8 RGB alpha=no count=1 tiff model=Camera & lens copyright=© Someone exif f=4 "
           "iso=400 date=2023:07:14 18:30:05 gps latitude=48.5 ref=N longitude=2.25 ref=W"},
    Sample{"xmp.heic",
           "64x48 8 RGB alpha=no count=1 tiff model=Camera & lens copyright=© Someone exif f=4 "
           "iso=400 date=2023:07:14 18:30:05 gps latitude=48.5 ref=N longitude=2.25 ref=W"},
    Sample{"xmp.psd",
           "12x8 16 RGB alpha=no count=1 tiff model=Camera & lens copyright=© Someone exif f=4 "
           "iso=400 date=2023:07:14 18:30:05 gps latitude=48.5 ref=N longitude=2.25 ref=W"},
    Sample{"large.psb", "12x8 16 RGB dpi=300x150 alpha=no count=1"},
    Sample{"camera.psd",
           "12x8 16 RGB profile=Test RGB dpi=72x72 alpha=no count=1 tiff make=Maker model=Camera 1 "
           "software=Firmware 1.0 copyright=© Someone exif lens=Lens 24-70 time=0.004 f=2.8 "
           "iso=400 length=35 length35=52 date=2023:07:14 18:30:05 gps latitude=48.8584 ref=N "
           "longitude=2.2945 ref=E iptc notice=IPTC notice"},
    Sample{"cmyk.psd", "12x8 16 CMYK alpha=no count=1"},
    Sample{"gray.psd", "12x8 16 Gray alpha=no count=1"},
    Sample{"rgb16-alpha.psd", "12x8 16 RGB alpha=yes count=1"},
    Sample{"srgb.psd", "12x8 16 RGB alpha=no count=1"},
    Sample{"big-endian.tif", "12x8 16 RGB alpha=no count=1 tiff"},
    Sample{"big.tif", "12x8 16 RGB alpha=no count=1 tiff"},
    Sample{"camera.tif",
           "12x8 16 RGB profile=Test RGB dpi=300x150 alpha=no count=1 tiff make=Maker model=Camera "
           "1 software=Firmware 1.0 copyright=© Someone exif lens=Lens 24-70 time=0.004 f=2.8 "
           "iso=400 length=35 length35=52 date=2023:07:14 18:30:05 gps latitude=48.8584 ref=N "
           "longitude=2.2945 ref=E iptc notice=IPTC notice"},
    Sample{"cmyk.tif", "12x8 16 CMYK alpha=no count=1 tiff"},
    Sample{"lab.tif", "12x8 16 Lab alpha=no count=1 tiff"},
    Sample{"pages.tif", "12x8 16 RGB alpha=no count=3 tiff"},
    Sample{"palette.tif", "12x8 4 RGB alpha=no count=1 tiff"},
    Sample{"rgba.tif", "12x8 16 RGB alpha=yes count=1 tiff"},
    Sample{"ycbcr.tif", "12x8 8 RGB alpha=no count=1 tiff"},
    Sample{"alpha.heic", "64x48 8 RGB alpha=yes count=1"},
    Sample{"camera.heic", "64x48 8 RGB profile=Test RGB dpi=72x72 alpha=no count=1 tiff make=Maker "
                          "model=Camera 1 software=Firmware 1.0 copyright=© Someone exif lens=Lens "
                          "24-70 time=0.004 f=2.8 iso=400 length=35 length35=52 date=2023:07:14 "
                          "18:30:05 gps latitude=48.8584 ref=N longitude=2.2945 ref=E"},
    Sample{"gray.heic", "64x48 8 Gray alpha=no count=1"},
    Sample{"plain.heic", "64x48 8 RGB alpha=no count=1"},
    Sample{"rotated.heic", "64x48 8 RGB alpha=no count=1 tiff exif"},
    Sample{"two.heic", "64x48 8 RGB alpha=no count=2"},
    Sample{"ten-bits.heif", "64x48 10 RGB alpha=no count=1"},

    Sample{"bilevel.tif", "12x8 1 Gray alpha=no count=1 tiff"},
    Sample{"float.tif", "12x8 32 RGB alpha=no count=1 tiff"},
    Sample{"gray4.tif", "12x8 4 Gray alpha=no count=1 tiff"},
    Sample{"rgb.tif", "12x8 16 RGB dpi=300x150 alpha=no count=1 tiff"},
    Sample{"rgb16-centimetres.tif", "12x8 16 RGB dpi=254x254 alpha=no count=1 tiff"},
    Sample{"alpha-lossless.webp", "12x8 8 RGB alpha=yes count=1"},
    Sample{"alpha.webp", "12x8 8 RGB alpha=yes count=1"},
    Sample{"animated.webp", "12x8 8 RGB alpha=yes count=3"},
    Sample{"camera.webp", "12x8 8 RGB profile=Test RGB dpi=72x72 alpha=no count=1 tiff make=Maker "
                          "model=Camera 1 software=Firmware 1.0 copyright=© Someone exif lens=Lens "
                          "24-70 time=0.004 f=2.8 iso=400 length=35 length35=52 date=2023:07:14 "
                          "18:30:05 gps latitude=48.8584 ref=N longitude=2.2945 ref=E"},
    Sample{"lossless.webp", "12x8 8 RGB alpha=no count=1"},
    Sample{"lossy.webp", "12x8 8 RGB alpha=no count=1"},
    Sample{"plain.jpg", "12x8 8 RGB count=1"},
    Sample{"gray.jpg", "12x8 8 Gray count=1"},
    Sample{"cmyk.jpg", "12x8 8 CMYK count=1"},
    Sample{"progressive.jpg", "12x8 8 RGB count=1"},
    Sample{"inches.jpg", "12x8 8 RGB dpi=300x150 count=1"},
    Sample{"centimetres.jpg", "12x8 8 RGB dpi=254x254 count=1"},
    Sample{"profile.jpg", "12x8 8 RGB profile=Test RGB count=1"},
    Sample{"camera.jpg",
           "12x8 8 RGB profile=sRGB IEC61966-2.1 count=1 tiff make=Maker model=Camera 1 "
           "software=Firmware 1.0 copyright=© Someone exif lens=Lens 24-70 time=0.004 f=2.8 "
           "iso=400 length=35 length35=52 date=2023:07:14 18:30:05 gps latitude=48.8584 ref=N "
           "longitude=2.2945 ref=E iptc notice=© IPTC"},
    Sample{"exif-resolution.jpg", "12x8 8 RGB dpi=240x240 count=1 tiff exif"},
    Sample{"jpeg-named.png", "12x8 8 RGB count=1"},
    Sample{"gray1.png", "12x8 1 Gray alpha=no count=1"},
    Sample{"gray2.png", "12x8 2 Gray alpha=no count=1"},
    Sample{"gray4.png", "12x8 4 Gray alpha=no count=1"},
    Sample{"gray8.png", "12x8 8 Gray alpha=no count=1"},
    Sample{"gray16.png", "12x8 16 Gray alpha=no count=1"},
    Sample{"rgb16.png", "12x8 16 RGB alpha=no count=1"},
    Sample{"rgba.png", "12x8 8 RGB alpha=yes count=1"},
    Sample{"graya.png", "12x8 16 Gray alpha=yes count=1"},
    Sample{"palette4.png", "12x8 4 RGB alpha=no count=1"},
    Sample{"transparent.png", "12x8 8 Gray alpha=yes count=1"},
    Sample{"72.png", "12x8 16 RGB dpi=72x72 alpha=no count=1"},
    Sample{"300.png", "12x8 16 RGB dpi=300x300 alpha=no count=1"},
    Sample{"srgb.png", "12x8 8 Gray profile=sRGB IEC61966-2.1 alpha=no count=1"},
    Sample{"profile.png", "12x8 8 Gray profile=Test Gray alpha=no count=1"},
    Sample{
        "camera.png",
        "12x8 16 RGB dpi=72x72 alpha=no count=1 tiff make=Maker model=Camera 1 software=Firmware "
        "1.0 copyright=© Someone exif lens=Lens 24-70 time=0.004 f=2.8 iso=400 length=35 "
        "length35=52 date=2023:07:14 18:30:05 gps latitude=48.8584 ref=N longitude=2.2945 ref=E"},
    Sample{"texts.png", "12x8 8 Gray alpha=no count=1 tiff software=Painter copyright=© Grün"},
    Sample{"old-exif.png", "12x8 8 Gray alpha=no count=1 tiff make=Maker exif"},
    Sample{"iptc.png", "12x8 8 Gray alpha=no count=1 iptc notice=IPTC notice"},
    Sample{"animated.png", "1x1 8 Gray alpha=no count=3"},
    Sample{"large.png",
           "300x200 8 RGB dpi=72x72 alpha=no count=1 tiff make=Maker software=At the end exif"},
    Sample{"plain.gif", "12x8 8 RGB alpha=no count=1"},
    Sample{"transparent.gif", "12x8 8 RGB alpha=yes count=1"},
    Sample{"animated.gif", "12x8 8 RGB alpha=no count=3"},
    Sample{"plain.bmp", "12x8 8 RGB dpi=72x72 alpha=no count=1"},
    Sample{"core.bmp", "12x8 8 RGB alpha=no count=1"},
    Sample{"palette.bmp", "12x8 8 RGB alpha=no count=1"},
    Sample{"alpha.bmp", "12x8 8 RGB profile=sRGB IEC61966-2.1 alpha=yes count=1"},
    Sample{"565.bmp", "12x8 5 RGB profile=sRGB IEC61966-2.1 alpha=no count=1"},
    Sample{"one.ico", "12x8 8 RGB alpha=yes count=1"},
    Sample{"three.ico", "256x256 8 RGB alpha=yes count=3"},
    Sample{
        "nikon.nef",
        "6048x4032 14 RGB count=1 tiff make=NIKON CORPORATION model=Camera 1 software=Firmware 1.0 "
        "copyright=© Someone exif lens=Lens 24-70 time=0.004 f=2.8 iso=400 length=35 length35=52 "
        "date=2023:07:14 18:30:05 gps latitude=48.8584 ref=N longitude=2.2945 ref=E"},
    Sample{
        "sony.arw",
        "6048x4032 14 RGB count=1 tiff make=SONY model=Camera 1 software=Firmware 1.0 copyright=© "
        "Someone exif lens=Lens 24-70 time=0.004 f=2.8 iso=400 length=35 length35=52 "
        "date=2023:07:14 18:30:05 gps latitude=48.8584 ref=N longitude=2.2945 ref=E"},
    Sample{
        "adobe.dng",
        "6048x4032 14 RGB count=1 tiff make=Maker model=Camera 1 software=Firmware 1.0 copyright=© "
        "Someone exif lens=Lens 24-70 time=0.004 f=2.8 iso=400 length=35 length35=52 "
        "date=2023:07:14 18:30:05 gps latitude=48.8584 ref=N longitude=2.2945 ref=E"},
    Sample{
        "plain.raw",
        "6048x4032 14 RGB count=1 tiff make=Maker model=Camera 1 software=Firmware 1.0 copyright=© "
        "Someone exif lens=Lens 24-70 time=0.004 f=2.8 iso=400 length=35 length35=52 "
        "date=2023:07:14 18:30:05 gps latitude=48.8584 ref=N longitude=2.2945 ref=E"},
    Sample{
        "canon.cr2",
        "5184x3456 -1 RGB count=1 tiff make=Canon model=Camera 1 software=Firmware 1.0 copyright=© "
        "Someone exif lens=Lens 24-70 time=0.004 f=2.8 iso=400 length=35 length35=52 "
        "date=2023:07:14 18:30:05 gps latitude=48.8584 ref=N longitude=2.2945 ref=E"},
    Sample{"layer.xcf", "12x8 8 RGB dpi=300x150 alpha=yes count=1"},
};

std::filesystem::path pathOf(const char* name) {
    return std::filesystem::path(QM_TEST_SAMPLES) / name;
}

std::optional<ImageProperties> readSample(const char* name, bool wantsImageCount = true) {
    const platform::Descriptor file(::open(pathOf(name).c_str(), O_RDONLY | O_CLOEXEC));
    EXPECT_GE(file.number(), 0) << name;
    return readImage(file.number(), wantsImageCount);
}

std::string contentsOf(const char* name) {
    std::ifstream file(pathOf(name), std::ios::binary);
    return {std::istreambuf_iterator<char>(file), {}};
}

// Lets the process open nothing any more, nor write, nor start others.
bool confine() {
    std::vector<sock_filter> filter{
        BPF_STMT(BPF_LD | BPF_W | BPF_ABS, offsetof(seccomp_data, nr)),
    };
    for (const int call : {SYS_openat, SYS_socket, SYS_execve, SYS_write, SYS_pwrite64, SYS_clone,
                           SYS_ftruncate, SYS_readlink}) {
        filter.push_back(BPF_JUMP(BPF_JMP | BPF_JEQ | BPF_K, static_cast<unsigned>(call), 0, 1));
        filter.push_back(BPF_STMT(BPF_RET | BPF_K, SECCOMP_RET_KILL_PROCESS));
    }
    filter.push_back(BPF_STMT(BPF_RET | BPF_K, SECCOMP_RET_ALLOW));
    const sock_fprog program{static_cast<unsigned short>(filter.size()), filter.data()};
    return ::prctl(PR_SET_NO_NEW_PRIVS, 1, 0, 0, 0) == 0 &&
           ::prctl(PR_SET_SECCOMP, SECCOMP_MODE_FILTER, &program) == 0;
}

// How a process ends that may open nothing: with 0 when the work is done.
template <class Work>
int statusOfConfined(const Work& work) {
    const pid_t child = ::fork();
    if (child == 0) {
        ::_exit(confine() && work() ? 0 : 1);
    }
    int status = -1;
    return child > 0 && ::waitpid(child, &status, 0) == child ? status : -1;
}

// What exiftool says of a file: the values of the tags, as numbers where they are, "-" for none.
std::vector<std::string> valuesByExiftool(const char* name, const std::string& tags) {
    std::istringstream line(
        outputOfShell("exiftool -n -T -c %.4f -FileType# " + tags + " " + pathOf(name).string()));
    std::vector<std::string> values;
    for (std::string value; std::getline(line, value, '\t');) {
        values.push_back(value.substr(0, value.find('\n')));
    }
    return values;
}

template <class Number>
std::string textOf(const std::optional<Number>& number) {
    std::ostringstream stream;
    return number ? (stream << *number, stream.str()) : "-";
}

class ImageReader : public ::testing::Test {
protected:
    static void SetUpTestSuite() { platform::media::prepareImageReaders(); }
};

} // namespace

TEST_F(ImageReader, TellsOfEachSampleWhatIsInIt) {
    for (const Sample& sample : samples) {
        EXPECT_EQ(ImageDescription::of(readSample(sample.name)), sample.description) << sample.name;
    }
}

TEST_F(ImageReader, HasAnExpectationForEachSample) {
    std::set<std::string> expected;
    for (const Sample& sample : samples) {
        expected.insert(sample.name);
    }
    std::set<std::string> found;
    for (const auto& entry : std::filesystem::directory_iterator(QM_TEST_SAMPLES)) {
        found.insert(entry.path().filename());
    }
    EXPECT_EQ(found, expected);
    EXPECT_EQ(expected.size(), samples.size());
}

TEST_F(ImageReader, CountsOnlyWhenAsked) {
    for (const Sample& sample : samples) {
        auto counted = readSample(sample.name);
        const auto uncounted = readSample(sample.name, false);
        ASSERT_TRUE(counted && uncounted) << sample.name;
        counted->imageCount.reset();
        EXPECT_EQ(counted, uncounted) << sample.name;
    }
}

TEST_F(ImageReader, PassesOverSegmentsOfJpegThatNobodyAsksFor) {
    const std::string whole = contentsOf("plain.jpg");
    constexpr std::size_t startSize = 2;
    std::string segments;
    for (const char kind : {'\xE5', '\xFE', '\xE5'}) {
        segments.append("\xFF").append(1, kind).append("\xFF\xFF").append(0xFFFD, 'x');
    }
    std::string larger = whole;
    larger.insert(startSize, segments);
    EXPECT_EQ(readImage(MemoryFile(larger).descriptor(), true), readSample("plain.jpg"));
    const auto cutOff = std::string_view(larger).substr(0, startSize + segments.size() - 1);
    EXPECT_EQ(readImage(MemoryFile(cutOff).descriptor(), true), std::nullopt);
}

TEST_F(ImageReader, ReadsBytesOfNoImageAsNone) {
    for (const std::string_view bytes :
         {"", "B", "text", "\xFF\xD8\xFF", "GIF89a", "BM", "%PDF-1.7"}) {
        EXPECT_EQ(readImage(MemoryFile(bytes).descriptor(), true), std::nullopt) << bytes;
    }
}

TEST_F(ImageReader, ReadsNothingButRegularFiles) {
    std::array<int, 2> ends{};
    ASSERT_EQ(::pipe2(ends.data(), O_CLOEXEC), 0);
    const platform::Descriptor reading(ends[0]);
    const platform::Descriptor writing(ends[1]);
    EXPECT_EQ(readImage(reading.number(), true), std::nullopt);
    EXPECT_EQ(readImage(-1, true), std::nullopt);
}

TEST_F(ImageReader, SaysNothingWrongOfFilesThatAreCutOff) {
    constexpr std::size_t step = 1;
    constexpr std::size_t smallest = 2000;
    for (const Sample& sample : samples) {
        const std::string whole = contentsOf(sample.name);
        const auto expected = readSample(sample.name);
        ASSERT_TRUE(expected) << sample.name;
        for (std::size_t size = 0; size < std::min(whole.size(), smallest); size += step) {
            const auto found =
                readImage(MemoryFile(std::string_view(whole).substr(0, size)).descriptor(), true);
            if (found) {
                EXPECT_EQ(found->pixelWidth, expected->pixelWidth) << sample.name << size;
                EXPECT_EQ(found->pixelHeight, expected->pixelHeight) << sample.name << size;
                EXPECT_EQ(found->depth, expected->depth) << sample.name << size;
            }
        }
    }
}

TEST_F(ImageReader, NeedsNothingButTheDescriptorOnceItIsPrepared) {
#ifdef QM_IS_SANITIZED
    GTEST_SKIP() << "sanitizers make calls of their own";
#endif
    std::vector<platform::Descriptor> files;
    for (const Sample& sample : samples) {
        files.emplace_back(::open(pathOf(sample.name).c_str(), O_RDONLY | O_CLOEXEC));
    }
    EXPECT_EQ(statusOfConfined([&files] {
                  return std::ranges::all_of(files, [](const auto& file) {
                      return readImage(file.number(), true).has_value();
                  });
              }),
              0);
    EXPECT_NE(statusOfConfined([] { return ::open("/dev/null", O_RDONLY | O_CLOEXEC) >= 0; }), 0);
}

TEST_F(ImageReader, AgreesWithExiftool) {
    for (const char* name :
         {"camera.jpg", "camera.png", "camera.tif", "camera.webp", "camera.heic", "camera.psd"}) {
        const auto found = readSample(name);
        ASSERT_TRUE(found && found->exif && found->tiff && found->gps) << name;
        const auto values = valuesByExiftool(
            name, "-ImageWidth -ImageHeight -IFD0:Model -IFD0:Make -ExifIFD:ExposureTime "
                  "-ExifIFD:FNumber -ExifIFD:ISO -ExifIFD:FocalLength "
                  "-ExifIFD:FocalLengthIn35mmFormat -ExifIFD:DateTimeOriginal -GPS:GPSLatitude "
                  "-GPS:GPSLatitudeRef -GPS:GPSLongitude -GPS:GPSLongitudeRef "
                  "-ICC_Profile:ProfileDescription -IPTC:CopyrightNotice");
        const auto& exif = *found->exif;
        const std::vector<std::string> expected{
            textOf(found->pixelWidth),
            textOf(found->pixelHeight),
            textOf(found->tiff->model),
            textOf(found->tiff->make),
            textOf(exif.exposureTime),
            textOf(exif.fNumber),
            std::to_string(exif.isoSpeedRatings.at(0)),
            textOf(exif.focalLength),
            textOf(exif.focalLenIn35mmFilm),
            textOf(exif.dateTimeOriginal),
            textOf(found->gps->latitude),
            textOf(found->gps->latitudeRef),
            textOf(found->gps->longitude),
            textOf(found->gps->longitudeRef),
            found->profileName == "sRGB IEC61966-2.1" ? "-" : textOf(found->profileName),
            found->iptc ? textOf(found->iptc->copyrightNotice) : "-"};
        EXPECT_EQ(std::vector(values.begin() + 1, values.end()), expected) << name;
    }
}

TEST_F(ImageReader, AgreesWithExiftoolOnTheSizeOfEverySample) {
    std::istringstream lines(outputOfShell("exiftool -n -T -FileName -ImageWidth -ImageHeight " +
                                           std::string(QM_TEST_SAMPLES) + "/*"));
    std::size_t count = 0;
    std::string name;
    for (std::string width, height; lines >> name >> width >> height; ++count) {
        const auto found = readSample(name.c_str(), false);
        ASSERT_TRUE(found) << name;
        EXPECT_EQ(textOf(found->pixelWidth), width) << name;
        EXPECT_EQ(textOf(found->pixelHeight), height) << name;
    }
    EXPECT_EQ(count, samples.size());
}
