// SPDX-License-Identifier: Apache-2.0
#include "model/QMFileItem.h"

#include "tests/unit/support/TemporaryFolder.h"

#include <algorithm>
#include <chrono>
#include <filesystem>
#include <string>
#include <vector>

#include <unistd.h>

#include <gtest/gtest.h>
#include <sys/stat.h>
#include <sys/xattr.h>

namespace {

using platform::FileURL;
using platform::Icon;
using platform::ResourceValues;
using Strings = std::vector<std::string>;

std::shared_ptr<QMFileItem> itemAt(const std::string& path) {
    return QMFileItem::initWithURL(FileURL::fromPath(path));
}

std::shared_ptr<QMFileItem> itemNamed(std::string name) {
    return QMFileItem::remoteItemWithName(std::move(name), "/remote/x", 0, std::nullopt, false,
                                          std::nullopt, std::nullopt, std::nullopt, std::nullopt);
}

TEST(QMFileItem, FreshItemHasDefaults) {
    const QMFileItem item;
    EXPECT_FALSE(item.name() || item.path() || item.fileURL() || item.kind() || item.icon() ||
                 item.uti() || item.permissions() || item.ownerName() || item.groupName());
    EXPECT_FALSE(item.modificationDate() || item.creationDate());
    EXPECT_FALSE(item.isDirectory() || item.isHidden() || item.isSymlink() || item.isPackage() ||
                 item.isArchive() || item.isDiskImage() || item.folderSizeCalculated());
    EXPECT_TRUE(item.tags().empty());
    EXPECT_EQ(item.size(), 0U);
    EXPECT_EQ(item.allocatedSize(), 0U);
    EXPECT_EQ(item.posixPermissions(), 0U);
    EXPECT_EQ(item.calculatedFolderSize(), 0U);
    EXPECT_EQ(item.gitStatus(), 0);
}

TEST(QMFileItem, IsFilledFromAFile) {
    const TemporaryFolder folder;
    const std::string path = folder.file("photo.png", std::string(5000, 'x'));
    ASSERT_EQ(::chmod(path.c_str(), 0640), 0);
    const auto item = itemAt(path);
    ASSERT_TRUE(item);
    EXPECT_EQ(item->name(), "photo.png");
    EXPECT_EQ(item->path(), path);
    EXPECT_EQ(item->fileURL()->path(), path);
    EXPECT_EQ(item->size(), 5000U);
    EXPECT_EQ(item->kind(), "PNG image");
    EXPECT_EQ(item->uti(), "public.png");
    EXPECT_EQ(item->icon(), (Icon{"image-png", 16, 16}));
    EXPECT_EQ(item->permissions(), "-rw-r-----");
    EXPECT_EQ(item->posixPermissions(), 0640U);
    EXPECT_TRUE(item->modificationDate());
    EXPECT_GE(item->allocatedSize(), 5000U);
    EXPECT_FALSE(item->isDirectory() || item->isHidden() || item->isSymlink() ||
                 item->isPackage() || item->isArchive() || item->isDiskImage());
}

TEST(QMFileItem, MissingFileGivesNone) {
    EXPECT_FALSE(itemAt("/nonexistent/file"));
}

TEST(QMFileItem, IsFilledFromValuesFetchedBefore) {
    ResourceValues values;
    values.name = "shown.zip";
    values.fileSize = 7;
    values.isHidden = true;
    values.isPackage = true;
    values.tagNames = Strings{"Red"};
    values.typeIdentifier = "public.zip-archive";
    values.effectiveIcon = Icon{"package", 48, 32};
    values.totalFileAllocatedSize = 512;
    const auto item =
        QMFileItem::fileItemWithURL(FileURL::fromPath("/nonexistent/stored.zip"), values);
    ASSERT_TRUE(item);
    EXPECT_EQ(item->name(), "shown.zip");
    EXPECT_EQ(item->path(), "/nonexistent/stored.zip");
    EXPECT_EQ(item->size(), 7U);
    EXPECT_EQ(item->allocatedSize(), 512U);
    EXPECT_EQ(item->tags(), Strings{"Red"});
    EXPECT_EQ(item->icon(), (Icon{"package", 16, 16}));
    EXPECT_TRUE(item->isHidden() && item->isPackage() && item->isArchive());
    EXPECT_EQ(item->permissions(), std::nullopt);
    EXPECT_EQ(item->ownerName(), std::nullopt);
}

TEST(QMFileItem, ValuesThatAreMissingHaveFallbacks) {
    const auto item = QMFileItem::fileItemWithURL(FileURL::fromPath("/nonexistent/a.b"), {});
    ASSERT_TRUE(item);
    EXPECT_EQ(item->name(), "a.b");
    EXPECT_EQ(item->kind(), "Document");
    EXPECT_EQ(item->uti(), "");
    EXPECT_TRUE(item->tags().empty());
    ASSERT_TRUE(item->icon());
    EXPECT_EQ(item->icon()->width, 16);
    EXPECT_FALSE(item->icon()->name.empty());
}

TEST(QMFileItem, AllocatedSizeIsAskedForWhenItWasNotFetched) {
    const TemporaryFolder folder;
    const std::string path = folder.file("f", std::string(10'000, 'x'));
    const auto item = QMFileItem::fileItemWithURL(FileURL::fromPath(path), {});
    EXPECT_EQ(item->allocatedSize(), itemAt(path)->allocatedSize());
    EXPECT_GE(item->allocatedSize(), 10'000U);
}

TEST(QMFileItem, AllocatedSizeOfAFolderComesFromItsBlocks) {
    const TemporaryFolder folder;
    struct stat status {};
    ASSERT_EQ(::stat(folder.path().c_str(), &status), 0);
    EXPECT_EQ(itemAt(folder.path())->allocatedSize(),
              static_cast<std::uint64_t>(status.st_blocks) * 512);
}

TEST(QMFileItem, ArchivesAreToldByTypeOrName) {
    const TemporaryFolder folder;
    for (const char* name : {"photos.zip", "backup.tar.gz", "a.TGZ", "b.rar", "c.xlsb", "d.iso",
                             "e.dmg", "f.cpio", "g.tar.xz", "h.7z", "i.jar"}) {
        EXPECT_TRUE(itemAt(folder.file(name))->isArchive()) << name;
    }
    for (const char* name : {"notes.txt", "zip", "tar.gz.txt", ".zip", "x.docx", "plain"}) {
        EXPECT_FALSE(itemAt(folder.file(name))->isArchive()) << name;
    }
}

TEST(QMFileItem, ArchiveNameCountsWhateverTheItemIs) {
    const TemporaryFolder folder;
    EXPECT_TRUE(itemAt(folder.folder("folder.tar.bz2"))->isArchive());
}

TEST(QMFileItem, DiskImagesAreToldByName) {
    const TemporaryFolder folder;
    EXPECT_TRUE(itemAt(folder.file("a.DMG"))->isDiskImage());
    EXPECT_TRUE(itemAt(folder.folder("b.sparsebundle"))->isDiskImage());
    EXPECT_FALSE(itemAt(folder.file("c.dmg.zip"))->isDiskImage());
}

TEST(QMFileItem, LinkToAFolderIsBoth) {
    const TemporaryFolder folder;
    ASSERT_EQ(::chmod(folder.folder("target").c_str(), 0750), 0);
    const auto item = itemAt(folder.link("link", "target"));
    ASSERT_TRUE(item);
    EXPECT_TRUE(item->isSymlink() && item->isDirectory());
    EXPECT_EQ(item->permissions(), "lrwxr-x---");
    EXPECT_EQ(item->uti(), "public.symlink");
    EXPECT_EQ(item->size(), 6U);
}

TEST(QMFileItem, LinkToAFileShowsItsTargetsPermissions) {
    const TemporaryFolder folder;
    ASSERT_EQ(::chmod(folder.file("target").c_str(), 0604), 0);
    const auto item = itemAt(folder.link("link", "target"));
    EXPECT_EQ(item->permissions(), "lrw----r--");
    EXPECT_EQ(item->posixPermissions(), 0604U);
    EXPECT_TRUE(item->isSymlink());
    EXPECT_FALSE(item->isDirectory());
}

TEST(QMFileItem, DanglingLinkHasNoPermissions) {
    const TemporaryFolder folder;
    const auto item = itemAt(folder.link("link", "nowhere"));
    ASSERT_TRUE(item);
    EXPECT_TRUE(item->isSymlink());
    EXPECT_EQ(item->permissions(), std::nullopt);
    EXPECT_EQ(item->ownerName(), std::nullopt);
    EXPECT_EQ(item->groupName(), std::nullopt);
    EXPECT_EQ(item->posixPermissions(), 0U);
}

TEST(QMFileItem, EveryPermissionBitHasItsPlace) {
    const TemporaryFolder folder;
    const std::string path = folder.file("f");
    const std::string all = "rwxrwxrwx";
    for (std::size_t bit = 0; bit < all.size(); ++bit) {
        const auto mode = static_cast<mode_t>(0400U >> bit);
        ASSERT_EQ(::chmod(path.c_str(), mode), 0);
        std::string expected(10, '-');
        expected[bit + 1] = all[bit];
        EXPECT_EQ(itemAt(path)->permissions(), expected);
        EXPECT_EQ(itemAt(path)->posixPermissions(), mode);
    }
}

TEST(QMFileItem, SetIdAndStickyBitsAreNotShown) {
    const TemporaryFolder folder;
    const std::string path = folder.folder("d");
    ASSERT_EQ(::chmod(path.c_str(), 07700), 0);
    EXPECT_EQ(itemAt(path)->permissions(), "drwx------");
    EXPECT_EQ(itemAt(path)->posixPermissions(), 0700U);
}

TEST(QMFileItem, OwnersWithoutAccountAreNumbers) {
    const TemporaryFolder folder;
    const std::string path = folder.file("f");
    if (::chown(path.c_str(), 54321, 54322) != 0) {
        GTEST_SKIP() << "only root gives files away";
    }
    EXPECT_EQ(itemAt(path)->ownerName(), "54321");
    EXPECT_EQ(itemAt(path)->groupName(), "54322");
    ASSERT_EQ(::chown(path.c_str(), 4'294'967'294U, 4'294'967'293U), 0);
    EXPECT_EQ(itemAt(path)->ownerName(), "-2");
    EXPECT_EQ(itemAt(path)->groupName(), "-3");
    ASSERT_EQ(::chown(path.c_str(), 0, 0), 0);
    EXPECT_EQ(itemAt(path)->ownerName(), "root");
    EXPECT_EQ(itemAt(path)->groupName(), "root");
}

TEST(QMFileItem, TagsComeFromTheFile) {
    const TemporaryFolder folder;
    const std::string path = folder.file("f");
    const std::string value = "Red,Wörk";
    if (::setxattr(path.c_str(), "user.xdg.tags", value.data(), value.size(), 0) != 0) {
        GTEST_SKIP() << "the file system keeps no extended attributes";
    }
    EXPECT_EQ(itemAt(path)->tags(), (Strings{"Red", "Wörk"}));
}

TEST(QMFileItem, SpecialFilesAreNeitherFoldersNorLinks) {
    const auto item = itemAt("/dev/null");
    ASSERT_TRUE(item);
    EXPECT_EQ(item->permissions()->front(), '-');
    EXPECT_FALSE(item->isDirectory() || item->isSymlink());
}

TEST(QMFileItem, NamesThatAreNotUTF8StayWhole) {
    const TemporaryFolder folder;
    const std::string path = folder.file("caf\xE9.txt");
    const auto item = itemAt(path);
    ASSERT_TRUE(item);
    EXPECT_EQ(item->name(), "caf\xE9.txt");
    EXPECT_EQ(item->path(), path);
}

TEST(QMFileItem, RemoteItemTakesWhatItIsGiven) {
    const platform::Date date{std::chrono::seconds(1000)};
    const Icon icon{"folder-remote", 64, 64};
    const auto item = QMFileItem::remoteItemWithName("n.zip", "/no/such/n.zip", 12, date, true,
                                                     "drwx", "someone", "Folder", icon);
    ASSERT_TRUE(item);
    EXPECT_EQ(item->name(), "n.zip");
    EXPECT_EQ(item->path(), "/no/such/n.zip");
    EXPECT_EQ(item->fileURL(), FileURL::fromPath("/no/such/n.zip"));
    EXPECT_EQ(item->size(), 12U);
    EXPECT_EQ(item->modificationDate(), date);
    EXPECT_TRUE(item->isDirectory());
    EXPECT_EQ(item->permissions(), "drwx");
    EXPECT_EQ(item->ownerName(), "someone");
    EXPECT_EQ(item->kind(), "Folder");
    EXPECT_EQ(item->icon(), icon);
    EXPECT_FALSE(item->uti() || item->groupName() || item->creationDate());
    EXPECT_FALSE(item->isArchive() || item->isDiskImage() || item->isHidden());
    EXPECT_EQ(item->posixPermissions(), 0U);
}

TEST(QMFileItem, CarriesTheApplicationsFields) {
    QMFileItem item;
    item.setCalculatedFolderSize(1U << 20U);
    item.setFolderSizeCalculated(true);
    item.setGitStatus(-3);
    EXPECT_EQ(item.calculatedFolderSize(), 1U << 20U);
    EXPECT_TRUE(item.folderSizeCalculated());
    EXPECT_EQ(item.gitStatus(), -3);
}

TEST(QMFileItem, CopyIsTheSameItem) {
    const auto item = itemAt("/");
    EXPECT_EQ(item->copy(), item);
}

TEST(QMFileItem, PrefetchedKeysKeepTheirOrder) {
    const auto& keys = QMFileItem::prefetchedResourceKeys();
    EXPECT_EQ(keys.front(), platform::ResourceKey::name);
    EXPECT_EQ(keys.back(), platform::ResourceKey::totalFileAllocatedSize);
}

platform::Data archived(const QMFileItem& item) {
    platform::KeyedArchiver coder("QMFileItem");
    item.encodeWithCoder(coder);
    return coder.encodedData();
}

std::shared_ptr<QMFileItem> unarchived(const platform::Data& data) {
    const auto coder = platform::KeyedUnarchiver::forReadingFromData(data, "QMFileItem");
    return coder ? QMFileItem::initWithCoder(*coder) : nullptr;
}

TEST(QMFileItemCoding, DecodedItemIsReadAgain) {
    EXPECT_TRUE(QMFileItem::supportsSecureCoding());
    const TemporaryFolder folder;
    const std::string path = folder.file("f\xFFn", "1");
    const platform::Data data = archived(*itemAt(path));
    ASSERT_NE(folder.file("f\xFFn", "123"), "");
    const auto decoded = unarchived(data);
    ASSERT_TRUE(decoded);
    EXPECT_EQ(decoded->path(), path);
    EXPECT_EQ(decoded->size(), 3U);
}

TEST(QMFileItemCoding, RemovedFileDecodesToNone) {
    const TemporaryFolder folder;
    const std::string path = folder.file("f");
    const platform::Data data = archived(*itemAt(path));
    std::filesystem::remove(path);
    EXPECT_FALSE(unarchived(data));
}

TEST(QMFileItemCoding, OnlyThePathTravels) {
    const auto coder =
        platform::KeyedUnarchiver::forReadingFromData(archived(*itemAt("/")), "QMFileItem");
    ASSERT_TRUE(coder);
    EXPECT_EQ(coder->decodeString("path"), "/");
    EXPECT_EQ(coder->decodeString("name"), std::nullopt);
}

TEST(QMFileItemCoding, ArchivesWithoutAUsablePathDecodeToNone) {
    EXPECT_FALSE(unarchived(archived(QMFileItem())));
    for (const std::string& path : {std::string(), std::string("/\0", 2), std::string("/\0x", 3)}) {
        platform::KeyedArchiver coder("QMFileItem");
        coder.encodeString("path", path);
        EXPECT_FALSE(unarchived(coder.encodedData()));
    }
}

TEST(QMFileItemPasteboard, CarriesTheFileURL) {
    EXPECT_EQ(QMFileItem::writableTypesForPasteboard(),
              std::vector<std::string_view>{"public.file-url"});
    const auto item = itemAt("/");
    EXPECT_EQ(item->pasteboardPropertyListForType("public.file-url"), "file:///");
    EXPECT_EQ(item->pasteboardPropertyListForType("public.url"), std::nullopt);
    EXPECT_EQ(QMFileItem().pasteboardPropertyListForType("public.file-url"), std::nullopt);
}

TEST(QMFileItemPasteboard, ReadsWhatItWrites) {
    EXPECT_EQ(QMFileItem::readableTypesForPasteboard(),
              std::vector<std::string_view>{"public.file-url"});
    EXPECT_EQ(static_cast<unsigned>(QMFileItem::readingOptionsForType("public.file-url")), 1U);
    const TemporaryFolder folder;
    const std::string path = folder.file("a b%\xFF?.txt");
    const auto text = itemAt(path)->pasteboardPropertyListForType("public.file-url");
    ASSERT_TRUE(text);
    const auto read = QMFileItem::initWithPasteboardPropertyList(*text, "public.file-url");
    ASSERT_TRUE(read);
    EXPECT_EQ(read->path(), path);
}

TEST(QMFileItemPasteboard, OtherTypesAndTextsGiveNone) {
    EXPECT_FALSE(QMFileItem::initWithPasteboardPropertyList("file:///", "public.url"));
    EXPECT_FALSE(QMFileItem::initWithPasteboardPropertyList("nonsense", "public.file-url"));
    EXPECT_FALSE(QMFileItem::initWithPasteboardPropertyList("", "public.file-url"));
    EXPECT_FALSE(
        QMFileItem::initWithPasteboardPropertyList("file:///nonexistent/f", "public.file-url"));
}

TEST(QMFileItem, EqualityIsThatOfThePaths) {
    const TemporaryFolder folder;
    const std::string path = folder.file("f");
    const auto first = itemAt(path);
    ASSERT_NE(folder.file("f", "changed"), "");
    const auto second = itemAt(path);
    EXPECT_TRUE(first->isEqual(second.get()));
    EXPECT_EQ(first->hash(), second->hash());
    EXPECT_TRUE(first->isEqual(first.get()));
    EXPECT_FALSE(first->isEqual(nullptr));
    EXPECT_FALSE(first->isEqual(itemAt(folder.file("F")).get()));
    EXPECT_FALSE(QMFileItem().isEqual(first.get()));
}

TEST(QMFileItem, OrderIsThatOfTheNames) {
    Strings names{"b", "Z", "A10", "ä", "a", "B2"};
    std::sort(names.begin(), names.end(), [](const std::string& left, const std::string& right) {
        return itemNamed(left)->compare(*itemNamed(right)) < 0;
    });
    EXPECT_EQ(names, (Strings{"a", "ä", "A10", "b", "B2", "Z"}));
}

TEST(QMFileItem, OrderIgnoresCaseAndWhatTheItemIs) {
    EXPECT_EQ(itemNamed("README")->compare(*itemNamed("readme")), std::weak_ordering::equivalent);
    const TemporaryFolder folder;
    EXPECT_EQ(itemAt(folder.folder("z"))->compare(*itemAt(folder.file("a"))),
              std::weak_ordering::greater);
}

} // namespace
