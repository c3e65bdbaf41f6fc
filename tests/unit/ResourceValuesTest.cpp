// SPDX-License-Identifier: Apache-2.0
#include "platform/ResourceValues.h"

#include "tests/unit/support/TemporaryFolder.h"

#include <array>
#include <chrono>
#include <filesystem>
#include <string>

#include <fcntl.h>
#include <unistd.h>

#include <gtest/gtest.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/un.h>

namespace {

using platform::ResourceKey;
using platform::ResourceValues;

constexpr std::array everyKey{
    ResourceKey::name,
    ResourceKey::fileSize,
    ResourceKey::isDirectory,
    ResourceKey::isHidden,
    ResourceKey::isSymbolicLink,
    ResourceKey::isPackage,
    ResourceKey::creationDate,
    ResourceKey::contentModificationDate,
    ResourceKey::tagNames,
    ResourceKey::localizedTypeDescription,
    ResourceKey::effectiveIcon,
    ResourceKey::typeIdentifier,
    ResourceKey::fileAllocatedSize,
    ResourceKey::totalFileAllocatedSize,
};

ResourceValues valuesOf(const std::string& path) {
    const auto values =
        platform::resourceValues(path, platform::ResourceKeySet(std::span(everyKey)));
    EXPECT_TRUE(values) << path;
    return values.value_or(ResourceValues());
}

bool isHidden(const std::string& path) {
    return valuesOf(path).isHidden.value_or(false);
}

void setModified(const std::string& path, std::int64_t seconds, long nanoseconds = 0) {
    const std::array<timespec, 2> times{timespec{seconds, nanoseconds},
                                        timespec{seconds, nanoseconds}};
    ASSERT_EQ(::utimensat(AT_FDCWD, path.c_str(), times.data(), AT_SYMLINK_NOFOLLOW), 0);
}

TEST(ResourceValues, OfAFile) {
    const TemporaryFolder folder;
    const std::string path = folder.file("notes.txt", "12345");
    setModified(path, 1'700'000'000, 123'456'789);
    const ResourceValues values = valuesOf(path);
    EXPECT_EQ(values.name, "notes.txt");
    EXPECT_EQ(values.fileSize, 5U);
    EXPECT_EQ(values.isDirectory, false);
    EXPECT_EQ(values.isSymbolicLink, false);
    EXPECT_EQ(values.isHidden, false);
    EXPECT_EQ(values.isPackage, false);
    EXPECT_EQ(values.typeIdentifier, "public.plain-text");
    EXPECT_EQ(values.localizedTypeDescription, "text");
    EXPECT_EQ(values.contentModificationDate,
              platform::Date(std::chrono::microseconds(1'700'000'000'123'456)));
    EXPECT_EQ(values.tagNames, std::nullopt);
    EXPECT_EQ(values.effectiveIcon->name, "text-plain");
    EXPECT_EQ(values.fileAllocatedSize.value_or(1) % 512, 0U);
    EXPECT_EQ(values.totalFileAllocatedSize, values.fileAllocatedSize);
}

TEST(ResourceValues, AbsentUnlessAskedFor) {
    const TemporaryFolder folder;
    const auto values = platform::resourceValues(folder.file("f"), {ResourceKey::name});
    ASSERT_TRUE(values);
    EXPECT_EQ(values->name, "f");
    EXPECT_FALSE(values->fileSize || values->isDirectory || values->isHidden ||
                 values->isSymbolicLink || values->isPackage || values->creationDate ||
                 values->contentModificationDate || values->localizedTypeDescription ||
                 values->tagNames || values->effectiveIcon || values->typeIdentifier ||
                 values->totalFileAllocatedSize || values->fileAllocatedSize);
}

TEST(ResourceValues, FoldersHaveNoSize) {
    const TemporaryFolder folder;
    const ResourceValues values = valuesOf(folder.folder("sub.txt"));
    EXPECT_EQ(values.isDirectory, true);
    EXPECT_EQ(values.fileSize, std::nullopt);
    EXPECT_EQ(values.fileAllocatedSize, std::nullopt);
    EXPECT_EQ(values.totalFileAllocatedSize, std::nullopt);
    EXPECT_EQ(values.typeIdentifier, "public.folder");
    EXPECT_EQ(values.localizedTypeDescription, "Folder");
    EXPECT_EQ(values.effectiveIcon->name, "folder");
}

TEST(ResourceValues, PackagesAreFoldersShownAsFiles) {
    const TemporaryFolder folder;
    const ResourceValues application = valuesOf(folder.folder("Tool.app"));
    EXPECT_EQ(application.isPackage, true);
    EXPECT_EQ(application.isDirectory, true);
    EXPECT_EQ(application.typeIdentifier, "com.apple.application-bundle");
    EXPECT_EQ(valuesOf(folder.file("Other.app")).isPackage, false);
}

TEST(ResourceValues, OfALinkAreItsOwn) {
    const TemporaryFolder folder;
    const std::string link = folder.link("link.txt", "/");
    setModified(link, 1'000'000);
    const ResourceValues values = valuesOf(link);
    EXPECT_EQ(values.name, "link.txt");
    EXPECT_EQ(values.isSymbolicLink, true);
    EXPECT_EQ(values.isDirectory, false);
    EXPECT_EQ(values.fileSize, 1U);
    EXPECT_EQ(values.typeIdentifier, "public.symlink");
    EXPECT_EQ(values.contentModificationDate, platform::Date(std::chrono::seconds(1'000'000)));
}

TEST(ResourceValues, DanglingLinksHaveThemAndMissingItemsDoNot) {
    const TemporaryFolder folder;
    EXPECT_EQ(valuesOf(folder.link("link", "nowhere")).isSymbolicLink, true);
    EXPECT_FALSE(platform::resourceValues(folder.path("missing"), {ResourceKey::name}));
    EXPECT_FALSE(platform::resourceValues("", {ResourceKey::name}));
    EXPECT_FALSE(platform::resourceValues(folder.file("f") + "/below", {ResourceKey::name}));
}

TEST(ResourceValues, OfTheRoot) {
    const ResourceValues values = valuesOf("/");
    EXPECT_EQ(values.name, "/");
    EXPECT_EQ(values.isHidden, false);
    EXPECT_EQ(values.isDirectory, true);
}

TEST(ResourceValues, NameIsTheOneOnDisk) {
    const TemporaryFolder folder;
    const std::string sub = folder.folder("sub");
    EXPECT_EQ(valuesOf(sub + "/.").name, "sub");
    EXPECT_EQ(valuesOf(sub + "/../sub/").name, "sub");
    EXPECT_EQ(valuesOf(sub + "/.").isHidden, false);
    EXPECT_EQ(valuesOf("/..").name, "/");
}

TEST(ResourceValues, SpecialFilesAreToldWithoutOpeningThem) {
    const TemporaryFolder folder;
    const std::string fifo = folder.path("fifo.txt");
    ASSERT_EQ(::mkfifo(fifo.c_str(), 0600), 0);
    EXPECT_EQ(valuesOf(fifo).typeIdentifier, "public.named-pipe");
    EXPECT_EQ(valuesOf("/dev/null").typeIdentifier, "public.character-special");

    const int descriptor = ::socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0);
    sockaddr_un address{};
    address.sun_family = AF_UNIX;
    folder.path("s").copy(address.sun_path, sizeof address.sun_path - 1);
    ASSERT_EQ(::bind(descriptor, reinterpret_cast<const sockaddr*>(&address), sizeof address), 0);
    EXPECT_EQ(valuesOf(folder.path("s")).typeIdentifier, "public.socket");
    ::close(descriptor);
}

TEST(ResourceValues, AnyExecuteBitMakesAnExecutable) {
    const TemporaryFolder folder;
    const std::string tool = folder.file("tool");
    EXPECT_EQ(valuesOf(tool).typeIdentifier, "public.data");
    for (const mode_t mode : {0700U, 0610U, 0601U}) {
        ASSERT_EQ(::chmod(tool.c_str(), mode), 0);
        EXPECT_EQ(valuesOf(tool).typeIdentifier, "public.unix-executable");
    }
}

TEST(ResourceValues, DatesReachBeforeAndBeyondTheUsual) {
    const TemporaryFolder folder;
    const std::string path = folder.file("f");
    for (const std::int64_t seconds : {std::int64_t{-86'400}, std::int64_t{4'000'000'000}}) {
        setModified(path, seconds);
        EXPECT_EQ(valuesOf(path).contentModificationDate,
                  platform::Date(std::chrono::seconds(seconds)));
    }
}

TEST(ResourceValues, CreationDateIsKeptWhenTheFileChanges) {
    const TemporaryFolder folder;
    const std::string path = folder.file("f");
    const auto created = valuesOf(path).creationDate;
    if (!created) {
        GTEST_SKIP() << "the file system keeps no creation dates";
    }
    setModified(path, 4'000'000'000);
    EXPECT_EQ(valuesOf(path).creationDate, created);
}

TEST(ResourceValues, LeadingDotsHide) {
    const TemporaryFolder folder;
    EXPECT_TRUE(isHidden(folder.file(".dot")));
    EXPECT_TRUE(isHidden(folder.link(".link", "nowhere")));
    EXPECT_FALSE(isHidden(folder.file("a.b")));
}

TEST(ResourceValues, LinesOfTheHiddenFileHide) {
    const TemporaryFolder folder;
    const std::string first = folder.file("first");
    const std::string second = folder.file("second one");
    const std::string third = folder.file("third");
    const std::string sub = folder.folder("sub");
    ASSERT_NE(folder.file(".hidden", "first\nsub\nsecond one"), "");
    EXPECT_TRUE(isHidden(first));
    EXPECT_TRUE(isHidden(second));
    EXPECT_FALSE(isHidden(third));
    EXPECT_TRUE(isHidden(sub + "//"));
}

TEST(ResourceValues, ChangesOfTheHiddenFileAreSeen) {
    const TemporaryFolder folder;
    const std::string path = folder.file("f");
    EXPECT_FALSE(isHidden(path));
    const std::string list = folder.file(".hidden", "f\n");
    EXPECT_TRUE(isHidden(path));
    ASSERT_NE(folder.file(".hidden", "other\n"), "");
    EXPECT_FALSE(isHidden(path));
    std::filesystem::remove(list);
    EXPECT_FALSE(isHidden(path));
}

TEST(ResourceValues, HiddenFileThatIsNoFileIsIgnored) {
    const TemporaryFolder folder;
    const std::string path = folder.file("f");
    ASSERT_EQ(::mkfifo(folder.path(".hidden").c_str(), 0600), 0);
    EXPECT_FALSE(isHidden(path));
}

} // namespace
