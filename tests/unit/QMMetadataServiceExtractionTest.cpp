// SPDX-License-Identifier: Apache-2.0
#include "foundation/QMPreferencesKeys.h"
#include "platform/DispatchQueue.h"
#include "services/QMMetadataService.h"
#include "tests/unit/support/DiskImageStandIn.h"
#include "tests/unit/support/StandardUserDefaults.h"
#include "tests/unit/support/TemporaryFolder.h"

#include <filesystem>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <thread>
#include <utility>
#include <vector>

#include <gtest/gtest.h>
#include <sys/stat.h>

namespace {

using platform::FileURL;
using platform::ImageProperties;
using platform::PropertyList;
using Result = std::shared_ptr<QMMetadataResult>;

class QMMetadataServiceExtraction : public testing::Test {
protected:
    QMMetadataServiceExtraction() { QMPreferencesKeys::registerDefaults(); }

    static std::shared_ptr<QMFileItem> item(const std::string& path) {
        return QMFileItem::initWithURL(FileURL::fromPath(path));
    }

    // Waits for the answer; `wasAtOnce` tells whether it came before the call returned.
    Result extract(const std::shared_ptr<const QMFileItem>& item) {
        Result answer;
        int calls = 0;
        service->extractMetadataForFileItem(item, [&](const Result& result) {
            answer = result;
            thread = std::this_thread::get_id();
            ++calls;
        });
        wasAtOnce = calls == 1;
        platform::DispatchQueue::runMainQueueUntil([&calls] { return calls > 0; });
        EXPECT_EQ(calls, 1);
        return answer;
    }

    // Whether the answer is null, at once and on this thread.
    bool isNothing(const std::shared_ptr<const QMFileItem>& item) {
        return extract(item) == nullptr && wasAtOnce && thread == std::this_thread::get_id();
    }

    // A result of this category without entries, on the main queue.
    void expectEmptyResult(const char* name, QMMetadataCategory category, const char* label) {
        const Result result = extract(item(folder.file(name, "contents")));
        ASSERT_NE(result, nullptr) << name;
        EXPECT_FALSE(wasAtOnce);
        EXPECT_EQ(result->category, category) << name;
        EXPECT_EQ(result->categoryName, label);
        ASSERT_NE(result->entries, nullptr);
        EXPECT_TRUE(result->entries->empty()) << name;
    }

    StandardUserDefaults defaults;
    TemporaryFolder folder;
    std::shared_ptr<QMMetadataService> service = QMMetadataService::sharedService();
    bool wasAtOnce = false;
    std::thread::id thread;
};

TEST_F(QMMetadataServiceExtraction, TellsWhatIsInAText) {
    const Result result = extract(item(folder.file("notes.TXT", "a b\n")));
    ASSERT_NE(result, nullptr);
    EXPECT_FALSE(wasAtOnce);
    EXPECT_EQ(thread, std::this_thread::get_id());
    EXPECT_EQ(result->category, QMMetadataCategoryText);
    EXPECT_EQ(result->categoryName, "meta.cat.text");
    ASSERT_EQ(result->entries->size(), 5U);
    EXPECT_EQ(result->entries->at(3)->key, "wordCount");
    EXPECT_EQ(result->entries->at(3)->value, "2");
}

TEST_F(QMMetadataServiceExtraction, TellsWhatPicturesSay) {
    // The day's last digit is that of the file's name.
    const auto read = [](const std::string& path, bool) {
        ImageProperties image;
        std::string date = "2023:07:10 08:00:00";
        date[9] = path[path.size() - 5];
        image.exif.emplace().dateTimeOriginal = std::move(date);
        return std::optional(std::move(image));
    };
    const auto pictures = QMMetadataService::init({nullptr, read});
    std::map<std::string, std::size_t> answers;
    std::size_t done = 0;
    constexpr std::size_t files = 64;
    for (std::size_t i = 0; i < files; ++i) {
        pictures->extractMetadataForFileItem(
            item(folder.file(std::to_string(i).append(".JPG"))), [&](const Result& result) {
                EXPECT_EQ(result->category, QMMetadataCategoryImageRaster);
                for (const auto& entry : *result->entries) {
                    ++answers[entry->value.value_or("none")];
                }
                ++done;
            });
    }
    platform::DispatchQueue::runMainQueueUntil([&done] { return done == files; });
    EXPECT_EQ(answers.size(), 10U);
    EXPECT_EQ(answers["Jul 10, 2023 at 8:00\u202FAM"], 7U);
    EXPECT_EQ(answers["Jul 19, 2023 at 8:00\u202FAM"], 6U);
}

TEST_F(QMMetadataServiceExtraction, TellsWhatFilmsAndRecordingsSay) {
    service = QMMetadataService::init({nullptr, {}, [](const std::string&, bool wantsMetadata) {
                                           platform::MediaAssetProperties asset;
                                           asset.duration = wantsMetadata ? 3725 : 3726;
                                           return std::optional(std::move(asset));
                                       }});
    const Result film = extract(item(folder.file("film.MOV", "contents")));
    ASSERT_NE(film, nullptr);
    EXPECT_EQ(film->category, QMMetadataCategoryVideo);
    EXPECT_EQ(film->entries->at(0)->value, "01:02:06");
    const Result recording = extract(item(folder.file("song.mp3", "contents")));
    ASSERT_NE(recording, nullptr);
    EXPECT_EQ(recording->category, QMMetadataCategoryAudio);
    EXPECT_EQ(recording->entries->at(0)->value, "62:05");
}

TEST_F(QMMetadataServiceExtraction, ToldOfAtOnceIsThatThereIsNothing) {
    EXPECT_TRUE(isNothing(nullptr));
    std::filesystem::create_directory(folder.path("photos.jpg"));
    EXPECT_TRUE(isNothing(item(folder.path("photos.jpg"))));
    EXPECT_TRUE(isNothing(item(folder.file("without"))));
    EXPECT_TRUE(isNothing(item(folder.file("picture.svgz"))));
    EXPECT_TRUE(isNothing(item(folder.file(".txt"))));
    EXPECT_TRUE(isNothing(std::make_shared<QMFileItem>()));
}

TEST_F(QMMetadataServiceExtraction, ThereIsNothingOnTheThreadThatAsked) {
    std::jthread([this] { EXPECT_TRUE(isNothing(item(folder.file("without")))); }).join();
    const Result result = extract(item(folder.file("a.txt")));
    EXPECT_NE(result, nullptr);
}

TEST_F(QMMetadataServiceExtraction, NoCompletionIsNoHarm) {
    service->extractMetadataForFileItem(nullptr, nullptr);
    service->extractMetadataForFileItem(item(folder.file("a.txt")), nullptr);
}

TEST_F(QMMetadataServiceExtraction, IsOffUnlessItIsSwitchedOn) {
    const auto text = item(folder.file("a.txt", "a"));
    defaults.save(PropertyList::Dictionary{{"QMMetadataEnabled", false}});
    EXPECT_TRUE(isNothing(text));
    defaults.save(PropertyList::Dictionary{{"QMMetadataEnabled", true}});
    EXPECT_NE(extract(text), nullptr);
    const StandardUserDefaults withoutDefaults;
    EXPECT_TRUE(isNothing(text));
}

TEST_F(QMMetadataServiceExtraction, CategoriesThatNothingIsReadOfHaveNoEntries) {
    expectEmptyResult("logo.svg", QMMetadataCategoryImageVector, "meta.cat.imageVector");
    expectEmptyResult("archive.zip", QMMetadataCategoryArchive, "meta.cat.archive");
    expectEmptyResult("a.docx", QMMetadataCategoryOffice, "meta.cat.office");
    expectEmptyResult("a.pem", QMMetadataCategoryCertificate, "meta.cat.certificate");
    expectEmptyResult("a.ttf", QMMetadataCategoryFont, "meta.cat.font");
    expectEmptyResult("a.db", QMMetadataCategoryDatabase, "meta.cat.database");
    expectEmptyResult("a.plist", QMMetadataCategoryConfig, "meta.cat.config");
    expectEmptyResult("clip.ts", QMMetadataCategoryVideo, "meta.cat.video");
}

TEST_F(QMMetadataServiceExtraction, DisabledKeysHaveNoEntries) {
    const auto text = item(folder.file("a.txt", "a"));
    defaults.save(PropertyList::Dictionary{{"QMMetadataEnabled_5", PropertyList::Array()}});
    EXPECT_TRUE(extract(text)->entries->empty());
    defaults.save(
        PropertyList::Dictionary{{"QMMetadataEnabled_5", PropertyList::Array{"wordCount"}}});
    ASSERT_EQ(extract(text)->entries->size(), 1U);
}

TEST_F(QMMetadataServiceExtraction, DisabledKeysStillHaveTheImageDescribed) {
    const DiskImageStandIn tool;
    tool.says("echo '<plist><dict><key>Format</key><string>UDZO</string></dict></plist>'");
    service = QMMetadataService::init({QMDiskImageService::init({tool.path()})});
    ASSERT_EQ(extract(item(tool.image()))->entries->size(), 1U);
    std::filesystem::remove(tool.folderPath() + "/arguments");
    defaults.save(PropertyList::Dictionary{{"QMMetadataEnabled_13", PropertyList::Array()}});
    const Result result = extract(item(tool.image()));
    EXPECT_EQ(result->category, QMMetadataCategoryDiskImage);
    EXPECT_TRUE(result->entries->empty());
    EXPECT_TRUE(tool.wasRun());
}

TEST_F(QMMetadataServiceExtraction, AFileThatIsGoneHasNoEntries) {
    const auto text = item(folder.file("a.txt", "a"));
    std::filesystem::remove(folder.path("a.txt"));
    const Result result = extract(text);
    ASSERT_NE(result, nullptr);
    EXPECT_TRUE(result->entries->empty());
}

TEST_F(QMMetadataServiceExtraction, AFIFOIsNotWaitedFor) {
    ASSERT_EQ(::mkfifo(folder.path("a.txt").c_str(), 0600), 0);
    const Result result = extract(item(folder.path("a.txt")));
    ASSERT_NE(result, nullptr);
    EXPECT_TRUE(result->entries->empty());
}

TEST_F(QMMetadataServiceExtraction, NeitherItemNorServiceIsNeededLater) {
    auto text = item(folder.file("a.txt", "a"));
    service = QMMetadataService::init();
    int calls = 0;
    service->extractMetadataForFileItem(
        text, [&calls](const Result& result) { calls += result->entries->empty() ? 0 : 1; });
    text.reset();
    service.reset();
    platform::DispatchQueue::runMainQueueUntil([&calls] { return calls == 1; });
}

TEST_F(QMMetadataServiceExtraction, ManyRunSideBySide) {
    constexpr std::size_t files = 64;
    std::vector<std::string> words(files);
    std::size_t done = 0;
    std::vector<std::jthread> callers;
    for (std::size_t i = 0; i < files; ++i) {
        std::string contents;
        for (std::size_t word = 0; word <= i; ++word) {
            contents += "мир ";
        }
        const auto text = item(folder.file(std::to_string(i).append(".txt"), contents));
        callers.emplace_back([&words, &done, text, i] {
            QMMetadataService::sharedService()->extractMetadataForFileItem(
                text, [&words, &done, i](const Result& result) {
                    words[i] = result->entries->at(3)->value.value_or("none");
                    ++done;
                });
        });
    }
    callers.clear();
    platform::DispatchQueue::runMainQueueUntil([&done] { return done == files; });
    for (std::size_t i = 0; i < files; ++i) {
        EXPECT_EQ(words[i], std::to_string(i + 1));
    }
}

} // namespace
