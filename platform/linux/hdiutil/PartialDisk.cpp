// SPDX-License-Identifier: Apache-2.0
#include "platform/linux/hdiutil/PartialDisk.h"

#include "platform/Format.h"
#include "platform/linux/hdiutil/ExpansionProgress.h"
#include "platform/linux/hdiutil/WorkFolders.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <ctime>
#include <filesystem>
#include <utility>
#include <vector>

#include <fcntl.h>
#include <unistd.h>

#include <sys/file.h>
#include <sys/random.h>
#include <sys/stat.h>

namespace platform::hdiutil {
namespace {

constexpr mode_t privateMode = 0600;
constexpr std::string_view diskEnding = ".disk";
constexpr std::string_view noteEnding = ".progress";
// What a crash may cost. Noting takes a few microseconds.
constexpr std::uint64_t notedStep = std::uint64_t{8} << 20;

std::string notePathOf(const std::string& disk) {
    return std::string(disk).append(noteEnding);
}

/// A note that nobody else holds, and what it says.
struct Left {
    Descriptor note;
    std::string disk;
    std::optional<ExpansionProgress> progress; ///< nullopt when the note is damaged
    std::chrono::system_clock::time_point time;
};

// Whoever finishes a disk removes the note before letting it go.
bool holdAlone(int note, struct stat& status) {
    return ::flock(note, LOCK_EX | LOCK_NB) == 0 && ::fstat(note, &status) == 0 &&
           S_ISREG(status.st_mode) && status.st_nlink > 0;
}

std::optional<ExpansionProgress> readNote(int note) {
    std::array<std::byte, ExpansionProgress::maximumSize> buffer{};
    const ssize_t count = ::pread(note, buffer.data(), buffer.size(), 0);
    return count < 0
               ? std::nullopt
               : ExpansionProgress::parse(DataView(buffer).first(static_cast<std::size_t>(count)));
}

std::optional<Left> seize(const std::string& notePath) {
    Descriptor note(
        ::open(notePath.c_str(), O_RDWR | O_CLOEXEC | O_NOFOLLOW | O_NONBLOCK | O_NOCTTY));
    struct stat status {};
    if (note.number() < 0 || !holdAlone(note.number(), status)) {
        return std::nullopt;
    }
    auto progress = readNote(note.number());
    const auto age = std::chrono::seconds(status.st_mtim.tv_sec);
    return Left{std::move(note), notePath.substr(0, notePath.size() - noteEnding.size()),
                std::move(progress), std::chrono::system_clock::time_point(age)};
}

std::vector<std::string> filesIn(const std::string& folder, std::string_view ending) {
    std::vector<std::string> paths;
    std::error_code error;
    std::filesystem::directory_iterator files(folder, error);
    for (; !error && files != std::filesystem::directory_iterator(); files.increment(error)) {
        if (files->path().extension() == ending) {
            paths.push_back(files->path());
        }
    }
    return paths;
}

std::vector<std::string> notesIn(const std::string& folder) {
    return filesIn(folder, noteEnding);
}

// Whether the file was last written to before this run of the system.
bool isOfAnotherRun(const std::string& path) {
    struct timespec run {};
    struct stat status {};
    if (::clock_gettime(CLOCK_BOOTTIME, &run) != 0 || ::lstat(path.c_str(), &status) != 0) {
        return false;
    }
    const auto start = std::chrono::system_clock::now() - std::chrono::seconds(run.tv_sec + 1);
    return S_ISREG(status.st_mode) && std::chrono::system_clock::time_point(
                                          std::chrono::seconds(status.st_mtim.tv_sec)) < start;
}

bool isGone(const std::string& path) {
    return ::access(path.c_str(), F_OK) != 0 && (errno == ENOENT || errno == ENOTDIR);
}

bool isUseless(const Left& left) {
    return !left.progress || left.progress->written == 0 || left.progress->boot != currentBoot() ||
           std::chrono::system_clock::now() - left.time > partialDiskLifetime ||
           isGone(left.progress->image) || isGone(left.disk);
}

// The disk of the note, or none when it is not the file that the note speaks of.
Descriptor diskOf(const Left& left) {
    Descriptor disk(::open(left.disk.c_str(), O_RDWR | O_CLOEXEC | O_NOFOLLOW | O_NONBLOCK));
    struct stat status {};
    const bool isIt = disk.number() >= 0 && ::fstat(disk.number(), &status) == 0 &&
                      S_ISREG(status.st_mode) && status.st_ino == left.progress->diskInode &&
                      std::cmp_greater_equal(status.st_size, left.progress->written) &&
                      std::cmp_less_equal(status.st_size, left.progress->diskSize);
    return isIt ? std::move(disk) : Descriptor();
}

Descriptor makeFile(const std::string& path) {
    return Descriptor(
        ::open(path.c_str(), O_RDWR | O_CREAT | O_EXCL | O_CLOEXEC | O_NOFOLLOW, privateMode));
}

// An empty note, for a disk that does not exist yet. Its descriptor is -1, with errno set, when
// there can be none.
Left newNote(const std::string& folder) {
    constexpr int attempts = 8;
    Left left;
    for (int attempt = 0; attempt < attempts; ++attempt) {
        std::uint64_t number = 0;
        if (::getrandom(&number, sizeof number, 0) != sizeof number) {
            return left;
        }
        left.disk = format("{}/{:x}{}", folder, number, diskEnding);
        Descriptor note = makeFile(notePathOf(left.disk));
        if (note.number() < 0) {
            return left;
        }
        // Before it is held, somebody may have cleared it away.
        struct stat status {};
        if (holdAlone(note.number(), status)) {
            left.note = std::move(note);
            return left;
        }
        errno = EAGAIN;
    }
    return left;
}

// What a new disk is going to be.
ExpansionProgress progressOf(const DiskImage& image, const struct stat& disk) {
    return {.written = 0,
            .diskSize = image.disk->size(),
            .diskInode = disk.st_ino,
            .boot = currentBoot(),
            .state = image.state.value_or(ImageState{}),
            .image = image.path};
}

bool writeNote(int note, const ExpansionProgress& progress) {
    const Data data = progress.serialized();
    return ::pwrite(note, data.data(), data.size(), 0) == static_cast<ssize_t>(data.size());
}

} // namespace

std::optional<PartialDisk> PartialDisk::open(const DiskImage& image) {
    const auto folder = WorkFolders::expandedDisks();
    if (!folder) {
        return std::nullopt;
    }
    auto left = image.state ? takeUp(*folder, image) : std::nullopt;
    return left ? std::move(left) : start(*folder, image);
}

std::optional<PartialDisk> PartialDisk::takeUp(const std::string& folder, const DiskImage& image) {
    for (const std::string& path : notesIn(folder)) {
        auto left = seize(path);
        if (!left || !left->progress || left->progress->image != image.path) {
            continue;
        }
        Descriptor disk = diskOf(*left);
        if (isUseless(*left) || left->progress->state != image.state ||
            left->progress->diskSize != image.disk->size() || disk.number() < 0) {
            removeDisk(left->disk);
            continue;
        }
        PartialDisk partial(left->disk, std::move(left->note), std::move(disk));
        partial.m_written = partial.m_noted = left->progress->written;
        partial.m_canBeTakenUp = true;
        return partial;
    }
    return std::nullopt;
}

// The note comes first, so that no disk is without one.
std::optional<PartialDisk> PartialDisk::start(const std::string& folder, const DiskImage& image) {
    Left left = newNote(folder);
    if (left.note.number() < 0) {
        return std::nullopt;
    }
    Descriptor disk = makeFile(left.disk);
    struct stat status {};
    if (disk.number() < 0 || ::fstat(disk.number(), &status) != 0 ||
        !writeNote(left.note.number(), progressOf(image, status))) {
        const int error = errno;
        removeDisk(left.disk);
        errno = error;
        return std::nullopt;
    }
    PartialDisk partial(left.disk, std::move(left.note), std::move(disk));
    partial.m_canBeTakenUp = image.state.has_value();
    return partial;
}

void PartialDisk::reached(std::uint64_t written) {
    m_written = written;
    if (m_written - m_noted >= notedStep) {
        note();
    }
}

void PartialDisk::note() {
    const auto start = ExpansionProgress::startOf(m_written);
    if (m_canBeTakenUp && ::pwrite(m_note.number(), start.data(), start.size(), 0) ==
                              static_cast<ssize_t>(start.size())) {
        m_noted = m_written;
    }
}

void PartialDisk::pause() {
    note();
    // What lies behind would be written again. Where it cannot be cut off, it does no harm.
    [[maybe_unused]] const int ignored =
        ::ftruncate(m_disk.number(), static_cast<off_t>(m_written));
}

bool PartialDisk::finish() {
    note();
    return ::close(m_disk.release()) == 0;
}

void PartialDisk::release() const {
    ::unlink(notePathOf(m_path).c_str());
}

bool isPartialDisk(const std::string& path) {
    return !isGone(notePathOf(path));
}

bool removeDisk(const std::string& path) {
    if (::unlink(path.c_str()) != 0 && errno != ENOENT) {
        return false;
    }
    return ::unlink(notePathOf(path).c_str()) == 0 || errno == ENOENT;
}

std::size_t removePartialDisks(PartialDisks which) {
    std::size_t count = 0;
    const auto folder = WorkFolders::expandedDisks();
    for (const std::string& path : folder ? notesIn(*folder) : std::vector<std::string>()) {
        const auto left = seize(path);
        if (left && (which == PartialDisks::all || isUseless(*left)) && removeDisk(left->disk)) {
            ++count;
        }
    }
    return count;
}

void removeForgottenDisks(const std::vector<std::string>& known) {
    const auto folder = WorkFolders::expandedDisks();
    auto paths = folder ? filesIn(*folder, diskEnding) : std::vector<std::string>();
    std::erase_if(paths, [&known](const std::string& path) {
        return std::ranges::find(known, path) != known.end() || isPartialDisk(path) ||
               !isOfAnotherRun(path);
    });
    std::ranges::for_each(paths, removeDisk);
}

} // namespace platform::hdiutil
