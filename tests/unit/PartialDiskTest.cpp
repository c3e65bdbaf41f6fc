// SPDX-License-Identifier: Apache-2.0
#include "platform/linux/hdiutil/PartialDisk.h"

#include "platform/linux/hdiutil/DiskFile.h"
#include "platform/linux/hdiutil/ExpansionProgress.h"
#include "tests/unit/support/EnvironmentVariable.h"
#include "tests/unit/support/FileTime.h"
#include "tests/unit/support/SparseImageWriter.h"
#include "tests/unit/support/TemporaryFolder.h"
#include "tests/unit/support/UdifWriter.h"

#include <fstream>
#include <iterator>

#include <unistd.h>

#include <gtest/gtest.h>
#include <sys/stat.h>

namespace {

using namespace platform::hdiutil;
namespace fs = std::filesystem;

constexpr std::uint64_t step = std::uint64_t{8} << 20U;

std::string contentsOf(const std::string& path) {
    std::ifstream file(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(file), {}};
}

void overwrite(const std::string& path, std::size_t offset, const std::string& bytes) {
    std::fstream file(path, std::ios::binary | std::ios::in | std::ios::out);
    file.seekp(static_cast<std::streamoff>(offset)) << bytes;
}

class PartialDiskTest : public testing::Test {
protected:
    PartialDiskTest() {
        const std::uint64_t sectors = disk.size() / 512;
        writeImage(sparseImageHeader(sectors, sectors, {1}) + disk);
    }

    void writeImage(const std::string& bytes) const { makeOld(folder.file("image", bytes)); }
    [[nodiscard]] DiskImage image() const {
        return std::get<DiskImage>(openDiskImage(folder.path("image")));
    }
    // An expansion that ended with the process when so much was written. Answers its path.
    [[nodiscard]] std::string interruptedAt(std::uint64_t written) const {
        auto partial = PartialDisk::open(image());
        overwrite(partial->path(), 0, disk.substr(0, written));
        partial->reached(written);
        return partial->path();
    }
    [[nodiscard]] std::vector<std::string> files() const {
        std::vector<std::string> paths;
        for (const auto& entry : fs::directory_iterator(folder.path("quillmere/disks"))) {
            paths.push_back(entry.path());
        }
        return paths;
    }
    static std::string noteOf(const std::string& path) { return path + ".progress"; }

    // Writes the note anew, changed.
    template <class Change>
    static void changeNote(const std::string& path, const Change& change) {
        const std::string bytes = contentsOf(noteOf(path));
        auto progress = ExpansionProgress::parse(platform::bytesOf(bytes)).value();
        change(progress);
        const platform::Data data = progress.serialized();
        std::ofstream(noteOf(path), std::ios::binary)
            .write(reinterpret_cast<const char*>(data.data()),
                   static_cast<std::streamsize>(data.size()));
    }

    TemporaryFolder folder;
    EnvironmentVariable cache{"XDG_CACHE_HOME", folder.path().c_str()};
    std::string disk = udif::sampleDisk(17 << 11U);
};

TEST_F(PartialDiskTest, IsTakenUpWhereItWasInterrupted) {
    const std::string path = interruptedAt(step);
    overwrite(path, 100, "what was there already");
    auto partial = PartialDisk::open(image());
    ASSERT_TRUE(partial);
    EXPECT_EQ(partial->path(), path);
    EXPECT_EQ(partial->written(), step);
    EXPECT_FALSE(expandDisk(image(), *partial));
    partial->release();
    std::string expected = disk;
    expected.replace(100, 22, "what was there already");
    EXPECT_TRUE(contentsOf(path) == expected);
    EXPECT_EQ(files(), std::vector<std::string>{path});
}

TEST_F(PartialDiskTest, IsNotTakenUpBeforeAnythingIsNoted) {
    const std::string path = interruptedAt(step - 1);
    EXPECT_NE(PartialDisk::open(image())->path(), path);
    EXPECT_FALSE(fs::exists(path));
}

TEST_F(PartialDiskTest, NotesTheExactPlaceWhenItStops) {
    auto partial = PartialDisk::open(image());
    partial->reached(12345);
    EXPECT_FALSE(partial->isOfUse());
    ASSERT_EQ(::ftruncate(partial->descriptor(), 1 << 20), 0);
    partial->pause();
    EXPECT_TRUE(partial->isOfUse());
    EXPECT_EQ(fs::file_size(partial->path()), 12345U);
    const std::string path = partial->path();
    partial.reset();
    partial = PartialDisk::open(image());
    EXPECT_EQ(partial->path(), path);
    EXPECT_EQ(partial->written(), 12345U);
}

TEST_F(PartialDiskTest, IsLeftToTheProcessThatIsAtWork) {
    auto first = PartialDisk::open(image());
    overwrite(first->path(), 0, disk.substr(0, step));
    first->reached(step);
    auto second = PartialDisk::open(image());
    ASSERT_TRUE(second);
    EXPECT_NE(second->path(), first->path());
    EXPECT_EQ(removePartialDisks(PartialDisks::all), 0U);
    EXPECT_TRUE(fs::exists(first->path()));
}

TEST_F(PartialDiskTest, OfAnImageThatWasWrittenToIsThrownAway) {
    const std::string path = interruptedAt(step);
    // It is no larger than before, and was not written to lately.
    overwrite(folder.path("image"), 5000, "x");
    makeOld(folder.path("image"));
    auto partial = PartialDisk::open(image());
    EXPECT_NE(partial->path(), path);
    EXPECT_EQ(partial->written(), 0U);
    EXPECT_FALSE(fs::exists(path));
    EXPECT_FALSE(fs::exists(noteOf(path)));
}

TEST_F(PartialDiskTest, OfAnImageThatIsBeingWrittenIsNotKept) {
    setModified(folder.path("image"), fs::file_time_type::clock::now() + std::chrono::hours(1));
    const std::string path = interruptedAt(2 * step);
    EXPECT_EQ(removePartialDisks(PartialDisks::useless), 1U);
    EXPECT_FALSE(fs::exists(path));
}

TEST_F(PartialDiskTest, IsNotTakenUpWhenTheNoteDoesNotFit) {
    using Change = void (*)(ExpansionProgress&);
    const std::vector<Change> changes{
        [](ExpansionProgress& progress) { progress.boot.back() ^= 1; },
        [](ExpansionProgress& progress) { progress.boot.clear(); },
        [](ExpansionProgress& progress) { ++progress.diskInode; },
        [](ExpansionProgress& progress) { ++progress.diskSize; },
        [](ExpansionProgress& progress) { progress.diskSize = UINT64_MAX; },
        [](ExpansionProgress& progress) { progress.diskSize = progress.written = UINT64_MAX; },
        [](ExpansionProgress& progress) { ++progress.written; },
        [](ExpansionProgress& progress) { progress.written = 0; },
        [](ExpansionProgress& progress) { progress.state = {}; },
    };
    for (std::size_t i = 0; i < changes.size(); ++i) {
        const std::string path = interruptedAt(step);
        changeNote(path, changes[i]);
        const auto partial = PartialDisk::open(image());
        ASSERT_TRUE(partial) << i;
        EXPECT_NE(partial->path(), path) << i;
        EXPECT_EQ(partial->written(), 0U) << i;
        EXPECT_FALSE(fs::exists(path)) << i;
    }
}

TEST_F(PartialDiskTest, IsNotTakenUpWhenTheDiskIsAnotherFile) {
    const std::string path = interruptedAt(step);
    fs::copy_file(path, folder.path("copy"));
    fs::rename(folder.path("copy"), path);
    EXPECT_NE(PartialDisk::open(image())->path(), path);
    const std::string other = interruptedAt(step);
    fs::rename(other, folder.path("elsewhere"));
    fs::create_symlink(folder.path("elsewhere"), other);
    EXPECT_NE(PartialDisk::open(image())->path(), other);
    EXPECT_TRUE(fs::exists(folder.path("elsewhere")));
}

TEST_F(PartialDiskTest, IsClearedAwayWhenNobodyCanWantIt) {
    const std::string path = interruptedAt(step);
    EXPECT_EQ(removePartialDisks(PartialDisks::useless), 0U);
    fs::rename(folder.path("image"), folder.path("moved"));
    EXPECT_EQ(removePartialDisks(PartialDisks::useless), 1U);
    fs::rename(folder.path("moved"), folder.path("image"));
    EXPECT_TRUE(files().empty());

    const std::string old = interruptedAt(step);
    const auto now = fs::file_time_type::clock::now();
    setModified(noteOf(old), now - partialDiskLifetime + std::chrono::hours(1));
    EXPECT_EQ(removePartialDisks(PartialDisks::useless), 0U);
    setModified(noteOf(old), now - partialDiskLifetime - std::chrono::hours(1));
    EXPECT_EQ(removePartialDisks(PartialDisks::useless), 1U);
    EXPECT_TRUE(files().empty());

    changeNote(interruptedAt(step), [](ExpansionProgress& progress) { progress.boot.back() ^= 1; });
    EXPECT_EQ(removePartialDisks(PartialDisks::useless), 1U);
    EXPECT_TRUE(files().empty());
}

TEST_F(PartialDiskTest, DamagedNotesAreClearedAwayAndNothingElse) {
    for (const std::string& contents :
         {std::string(), std::string("x"), std::string(100'000, 'x')}) {
        const std::string path = interruptedAt(step);
        std::ofstream(noteOf(path)) << contents;
        EXPECT_EQ(removePartialDisks(PartialDisks::useless), 1U);
        EXPECT_FALSE(fs::exists(path));
    }
    // A complete disk has no note.
    const std::string disks = folder.path("quillmere/disks/");
    std::ofstream(disks + "1.disk") << "complete";
    std::ofstream(folder.path("other")) << "other";
    fs::create_symlink(folder.path("other"), disks + "2.disk.progress");
    ASSERT_EQ(::mkfifo((disks + "3.disk.progress").c_str(), 0600), 0);
    EXPECT_EQ(removePartialDisks(PartialDisks::all), 0U);
    EXPECT_EQ(files().size(), 3U);
    EXPECT_EQ(contentsOf(folder.path("other")), "other");
}

TEST_F(PartialDiskTest, GivesWayWhereRoomIsNeeded) {
    const std::string path = interruptedAt(step);
    EXPECT_TRUE(isPartialDisk(path));
    EXPECT_EQ(removePartialDisks(PartialDisks::all), 1U);
    EXPECT_FALSE(isPartialDisk(path));
    EXPECT_TRUE(files().empty());
}

TEST_F(PartialDiskTest, IsNoCompleteDiskWhenTheImageChangesMeanwhile) {
    const DiskImage opened = image();
    auto partial = PartialDisk::open(opened);
    overwrite(folder.path("image"), 5000, "x");
    const auto failure = expandDisk(opened, *partial);
    ASSERT_TRUE(failure);
    EXPECT_EQ(failure->reason, "the image was changed meanwhile");
    EXPECT_FALSE(failure->canGoOn);
}

} // namespace
