// SPDX-License-Identifier: Apache-2.0
// Volumes are file systems in memory: one that is mounted anew is empty.
#include "platform/linux/hdiutil/Undo.h"

#include "tests/unit/support/EnvironmentVariable.h"
#include "tests/unit/support/TemporaryFolder.h"

#include <array>
#include <cerrno>
#include <filesystem>
#include <fstream>
#include <optional>
#include <string>

#include <fcntl.h>
#include <sched.h>
#include <unistd.h>

#include <gtest/gtest.h>
#include <sys/mount.h>
#include <sys/statvfs.h>

namespace {

using platform::hdiutil::AttachRecord;
using platform::hdiutil::AttachRecords;
using platform::hdiutil::MountMethod;
using platform::hdiutil::undoWholly;

bool exists(const std::string& path) {
    return std::filesystem::exists(path);
}

bool isMounted(const std::string& path) {
    std::ifstream table("/proc/self/mounts");
    for (std::string device, place, rest; table >> device >> place && std::getline(table, rest);) {
        if (place == path) {
            return true;
        }
    }
    return false;
}

bool mountInMemory(const std::string& path) {
    return ::mount("none", path.c_str(), "tmpfs", MS_NOSUID | MS_NODEV, nullptr) == 0;
}

// As it is left by a program for a file system that has crashed. False where there is no FUSE.
bool mountWithoutProgram(const std::string& path) {
    const int device = ::open("/dev/fuse", O_RDWR | O_CLOEXEC);
    const std::string options =
        "fd=" + std::to_string(device) + ",rootmode=40000,user_id=0,group_id=0";
    const bool isMounted = device >= 0 && ::mount("none", path.c_str(), "fuse",
                                                  MS_NOSUID | MS_NODEV, options.c_str()) == 0;
    ::close(device);
    return isMounted;
}

// Keeps a volume from being unmounted.
class OpenFolder {
public:
    explicit OpenFolder(const std::string& path)
        : m_descriptor(::open(path.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC)) {}
    OpenFolder(const OpenFolder&) = delete;
    OpenFolder& operator=(const OpenFolder&) = delete;
    OpenFolder(OpenFolder&&) = delete;
    OpenFolder& operator=(OpenFolder&&) = delete;
    ~OpenFolder() { ::close(m_descriptor); }

private:
    int m_descriptor;
};

/// An image whose volumes "0", "1" and "2" are mounted, with a file in each, where no other process
/// sees them.
class UndoWholly : public testing::Test {
protected:
    void SetUp() override {
        if (::unshare(CLONE_NEWNS) != 0 ||
            ::mount(nullptr, "/", nullptr, MS_REC | MS_PRIVATE, nullptr) != 0) {
            GTEST_SKIP() << "only root may mount here";
        }
        ASSERT_TRUE(records);
        record.image = folder.file("image");
        record.expandedDisk = folder.file("disk");
        record.isComplete = true;
        for (const char* const name : {"0", "1", "2"}) {
            const std::string place = folder.folder(name);
            ASSERT_TRUE(mountInMemory(place));
            std::ofstream(place + "/file") << name;
            record.volumes.push_back({place, MountMethod::kernel});
        }
        ASSERT_TRUE(records->store(record));
    }

    void TearDown() override {
        for (const auto& volume : record.volumes) {
            ::umount2(volume.mountPoint.c_str(), MNT_DETACH);
        }
    }

    [[nodiscard]] std::string contents(const std::string& volume) const {
        std::string text;
        std::ifstream(folder.path(volume) + "/file") >> text;
        return text;
    }

    void expectWhole() const {
        for (const std::string name : {"0", "1", "2"}) {
            EXPECT_TRUE(isMounted(folder.path(name))) << name;
            EXPECT_EQ(contents(name), name);
        }
        EXPECT_TRUE(exists(record.expandedDisk));
        ASSERT_EQ(records->all().size(), 1U);
        EXPECT_EQ(records->all().front(), record);
    }

    void expectGone() const {
        for (const char* const name : {"0", "1", "2"}) {
            EXPECT_FALSE(exists(folder.path(name))) << name;
        }
        EXPECT_FALSE(exists(record.expandedDisk));
        EXPECT_TRUE(records->all().empty());
    }

    const TemporaryFolder folder;
    const EnvironmentVariable runtime{"XDG_RUNTIME_DIR", folder.path().c_str()};
    const std::optional<AttachRecords> records = AttachRecords::open();
    AttachRecord record;
};

TEST_F(UndoWholly, TakesEverythingBack) {
    EXPECT_TRUE(undoWholly(record, *records));
    expectGone();
}

TEST_F(UndoWholly, LeavesTheImageWholeWhicheverVolumeIsRefused) {
    for (const char* const busy : {"0", "1", "2"}) {
        const OpenFolder use(folder.path(busy));
        EXPECT_FALSE(undoWholly(record, *records));
        EXPECT_EQ(errno, EBUSY);
        expectWhole();
    }
    EXPECT_TRUE(undoWholly(record, *records));
    expectGone();
}

TEST_F(UndoWholly, PutsVolumesBackWithTheirOptions) {
    ASSERT_EQ(::mount(nullptr, folder.path("2").c_str(), nullptr,
                      MS_REMOUNT | MS_BIND | MS_RDONLY | MS_NOSUID | MS_NODEV, nullptr),
              0);
    const OpenFolder use(folder.path("0"));
    EXPECT_FALSE(undoWholly(record, *records));
    expectWhole();
    constexpr unsigned long options = ST_RDONLY | ST_NOSUID | ST_NODEV;
    struct statvfs status {};
    ASSERT_EQ(::statvfs(folder.path("2").c_str(), &status), 0);
    EXPECT_EQ(status.f_flag & options, options);
    ASSERT_EQ(::statvfs(folder.path("1").c_str(), &status), 0);
    EXPECT_EQ(status.f_flag & options, options & ~static_cast<unsigned long>(ST_RDONLY));
}

// As systemd sets all mounts up.
TEST_F(UndoWholly, WorksWhereMountsAreShared) {
    ASSERT_EQ(::mount(nullptr, "/", nullptr, MS_REC | MS_SHARED, nullptr), 0);
    {
        const OpenFolder use(folder.path("0"));
        EXPECT_FALSE(undoWholly(record, *records));
        EXPECT_EQ(errno, EBUSY);
        expectWhole();
    }
    EXPECT_TRUE(undoWholly(record, *records));
    expectGone();
}

TEST_F(UndoWholly, DoesNotBringBackWhatSomebodyElseUnmounted) {
    ASSERT_EQ(::umount2(folder.path("2").c_str(), 0), 0);
    const OpenFolder use(folder.path("0"));
    EXPECT_FALSE(undoWholly(record, *records));
    EXPECT_FALSE(isMounted(folder.path("2")));
    EXPECT_EQ(contents("1"), "1");
    EXPECT_EQ(records->all().size(), 1U);
}

TEST_F(UndoWholly, KeepsCopiesUntilNothingCanBeRefused) {
    const std::string copy = folder.folder("copy");
    std::ofstream(copy + "/file") << "copy";
    record.volumes.push_back({copy, MountMethod::copy});
    ASSERT_TRUE(records->store(record));
    {
        const OpenFolder use(folder.path("0"));
        EXPECT_FALSE(undoWholly(record, *records));
        EXPECT_EQ(contents("copy"), "copy");
        expectWhole();
    }
    EXPECT_TRUE(undoWholly(record, *records));
    EXPECT_FALSE(exists(copy));
    expectGone();
}

TEST_F(UndoWholly, TakesBackVolumesThatCanNoLongerBeLookedAt) {
    const std::string place = folder.folder("dead");
    if (!mountWithoutProgram(place)) {
        GTEST_SKIP() << "no FUSE here";
    }
    record.volumes.push_back({place, MountMethod::fuse});
    ASSERT_TRUE(records->store(record));
    EXPECT_TRUE(undoWholly(record, *records));
    EXPECT_FALSE(isMounted(place));
    EXPECT_FALSE(exists(place));
    expectGone();
}

} // namespace
