// SPDX-License-Identifier: Apache-2.0
#include "platform/DispatchQueue.h"
#include "platform/NotificationCenter.h"
#include "services/QMDiskImageService.h"
#include "tests/unit/support/DiskImageStandIn.h"
#include "tests/unit/support/Waiting.h"

#include <string>
#include <thread>
#include <vector>

#include <gtest/gtest.h>

namespace {

using namespace std::chrono_literals;
namespace DispatchQueue = platform::DispatchQueue;
using platform::FileURL;
using platform::Notification;
using platform::NotificationCenter;
using Events = std::vector<std::string>;

const char* const mountedAtX = "echo '<plist><dict><key>system-entities</key><array>"
                               "<dict/><dict><key>mount-point</key><string/></dict>"
                               "<dict><key>mount-point</key><string>/mnt/x</string></dict>"
                               "</array></dict></plist>'";

class DiskImageMounting : public testing::Test {
protected:
    DiskImageMounting() {
        for (const auto name :
             {QMDiskImageDidMountNotification, QMDiskImageDidUnmountNotification}) {
            tokens.push_back(NotificationCenter::defaultCenter().addObserver(
                name, nullptr, [this](const Notification& notification) { note(notification); }));
        }
    }
    ~DiskImageMounting() override {
        for (const auto token : tokens) {
            NotificationCenter::defaultCenter().removeObserver(token);
        }
    }

    void note(const Notification& notification) {
        std::string text = notification.name;
        for (const auto& [key, value] : notification.userInfo) {
            const auto* url = std::get_if<FileURL>(&value);
            text.append(" ").append(key).append("=").append(
                url != nullptr ? url->absoluteString() : std::get<std::string>(value));
        }
        events.push_back(notification.object == service.get() ? text : "another's " + text);
        onMainThread = onMainThread && std::this_thread::get_id() == mainThread;
    }

    // Waits until the main queue has run `count` completions, then for what may come after.
    void serveMainQueue() {
        DispatchQueue::runMainQueueUntil([this] { return isDone; });
        bool passed = false;
        DispatchQueue::asyncMain([&passed] { passed = true; });
        DispatchQueue::runMainQueueUntil([&passed] { return passed; });
    }

    // Mounts the stand-in's image; the outcome is among the events.
    void mount(const std::string& script) { mount(script, tool.image()); }
    void mount(const std::string& script, const std::string& path) {
        tool.says(script);
        isDone = false;
        service->mountDiskImage(
            path, [this](std::optional<FileURL> url, std::optional<QMError> failure) {
                EXPECT_NE(url.has_value(), failure.has_value());
                events.push_back(url ? "mounted " + url->absoluteString() : "failed");
                finish(std::move(failure));
            });
        EXPECT_FALSE(isDone);
        serveMainQueue();
    }
    void unmount(const std::string& script, const std::string& path) {
        tool.says(script);
        isDone = false;
        service->unmountVolume(FileURL::fromDirectoryPath(path),
                               [this](std::optional<QMError> failure) {
                                   events.emplace_back(failure ? "failed" : "unmounted");
                                   finish(std::move(failure));
                               });
        EXPECT_FALSE(isDone);
        serveMainQueue();
    }
    void finish(std::optional<QMError> failure) {
        error = std::move(failure);
        onMainThread = onMainThread && std::this_thread::get_id() == mainThread;
        isDone = true;
    }

    void expectError(std::int64_t code, const std::string& description) {
        ASSERT_TRUE(error);
        EXPECT_EQ(error->domain, "QMDiskImage");
        EXPECT_EQ(error->code, code);
        EXPECT_EQ(error->localizedDescription, description);
        EXPECT_EQ(events, Events{"failed"});
        EXPECT_TRUE(onMainThread);
        EXPECT_TRUE(service->mountedImages().empty());
    }

    DiskImageStandIn tool;
    std::shared_ptr<QMDiskImageService> service = QMDiskImageService::init({tool.path(), 2min});
    std::thread::id mainThread = std::this_thread::get_id();
    std::vector<NotificationCenter::Token> tokens;
    Events events;
    std::optional<QMError> error;
    bool isDone = false;
    bool onMainThread = true;
};

TEST_F(DiskImageMounting, AnnouncesThenReportsAndRecordsAMount) {
    mount(mountedAtX);
    EXPECT_EQ(events, (Events{"QMDiskImageDidMountNotification mountPoint=file:///mnt/x/ "
                              "sourcePath=" +
                                  tool.image(),
                              "mounted file:///mnt/x/"}));
    EXPECT_EQ(tool.arguments(), "attach\n" + tool.image() + "\n-plist\n-noverify\n");
    EXPECT_EQ(service->mountedImages(),
              (QMDiskImageService::MountedImages{{"/mnt/x", tool.image()}}));
    EXPECT_TRUE(onMainThread);
}

TEST_F(DiskImageMounting, AnnouncesThenReportsAndForgetsAnUnmount) {
    mount(mountedAtX);
    events.clear();
    unmount("echo ignored; exit 0", "/mnt/x/");
    EXPECT_EQ(events, (Events{"QMDiskImageDidUnmountNotification mountPath=/mnt/x", "unmounted"}));
    EXPECT_EQ(tool.arguments(), "detach\n/mnt/x\n");
    EXPECT_TRUE(service->mountedImages().empty());
    EXPECT_TRUE(onMainThread);
}

TEST_F(DiskImageMounting, AnnouncesTheUnmountOfWhatOthersMounted) {
    mount(mountedAtX);
    const auto before = service->mountedImages();
    events.clear();
    unmount("", "/mnt/other");
    EXPECT_EQ(events,
              (Events{"QMDiskImageDidUnmountNotification mountPath=/mnt/other", "unmounted"}));
    EXPECT_EQ(service->mountedImages(), before);
}

TEST_F(DiskImageMounting, IsAnnouncedWithoutACompletionToo) {
    tool.says(mountedAtX);
    service->mountDiskImage(tool.image(), {});
    DispatchQueue::runMainQueueUntil([this] { return events.size() == 1; });
    service->unmountVolume(FileURL::fromPath("/mnt/x"), {});
    DispatchQueue::runMainQueueUntil([this] { return events.size() == 2; });
    EXPECT_TRUE(events[0].starts_with("QMDiskImageDidMountNotification "));
    EXPECT_EQ(events[1], "QMDiskImageDidUnmountNotification mountPath=/mnt/x");
    EXPECT_TRUE(onMainThread);
}

TEST_F(DiskImageMounting, RefusesWhatIsNotThere) {
    mount(mountedAtX, "");
    expectError(-1, "diskImage.error.notFound");
    events.clear();
    mount(mountedAtX, tool.image() + ".dmg");
    expectError(-1, "diskImage.error.notFound");
    EXPECT_FALSE(tool.wasRun());
}

TEST_F(DiskImageMounting, RefusesWhatIsNotNamedLikeAnImage) {
    const TemporaryFolder folder;
    mount(mountedAtX, folder.file("notes.txt"));
    expectError(-2, "diskImage.error.notMountable");
    EXPECT_FALSE(tool.wasRun());
}

TEST_F(DiskImageMounting, TakesAFolderThatIsNamedLikeAnImage) {
    const TemporaryFolder folder;
    mount(mountedAtX, folder.folder("x.sparsebundle"));
    EXPECT_EQ(error, std::nullopt);
}

TEST_F(DiskImageMounting, IsSilentAboutRefusalsWithoutACompletion) {
    service->mountDiskImage("", {});
    service->mountDiskImage("/etc/passwd", {});
    isDone = true;
    serveMainQueue();
    EXPECT_TRUE(events.empty());
}

TEST_F(DiskImageMounting, TellsWhyTheToolWasNotStarted) {
    service = QMDiskImageService::init({"/nowhere/tool", 2min});
    mount(mountedAtX);
    expectError(-3, "Failed to launch hdiutil: No such file or directory");
    events.clear();
    unmount("", "/mnt/x");
    expectError(-3, "Failed to launch hdiutil: No such file or directory");
}

TEST_F(DiskImageMounting, HandsOnWhatAFailedToolSaid) {
    mount("echo 'attach failed - Resource busy' >&2; exit 1");
    expectError(-4, "diskImage.error.mountFailed: attach failed - Resource busy\n");
    events.clear();
    unmount("echo 'detach failed' >&2; exit 16", "/mnt/x");
    expectError(-4, "Failed to unmount: detach failed\n");
}

TEST_F(DiskImageMounting, HandsOnTheSilenceOfAFailedTool) {
    mount("exit 1");
    expectError(-4, "diskImage.error.mountFailed: ");
    events.clear();
    unmount("exit 1", "/mnt/x");
    expectError(-4, "Failed to unmount: ");
}

TEST_F(DiskImageMounting, CallsErrorOutputThatIsNoTextUnknown) {
    mount("printf 'a\\377b' >&2; exit 1");
    expectError(-4, "diskImage.error.mountFailed: Unknown error");
    events.clear();
    unmount("printf 'a\\377b' >&2; exit 1", "/mnt/x");
    expectError(-4, "Failed to unmount: Unknown error");
}

TEST_F(DiskImageMounting, FailsWhenTheToolWasKilled) {
    mount("echo dead >&2; kill -KILL $$");
    expectError(-4, "diskImage.error.mountFailed: dead\n");
}

TEST_F(DiskImageMounting, FailsWhenTheOutputNamesNoMountPoint) {
    const std::string expected = "Could not determine mount point from hdiutil output.";
    for (const char* const script :
         {"echo '<plist><array/></plist>'", "exit 0", "echo nonsense",
          "echo '<plist><dict><key>system-entities</key><string>x</string></dict></plist>'"}) {
        events.clear();
        mount(script);
        expectError(-6, expected);
    }
}

TEST_F(DiskImageMounting, EndsAToolThatTakesTooLong) {
    service = QMDiskImageService::init({tool.path(), 100ms});
    mount("exec sleep 1000");
    expectError(-5, "diskImage.error.timeout");
}

TEST_F(DiskImageMounting, CountsATimeoutBeforeAStatus) {
    service = QMDiskImageService::init({tool.path(), 100ms});
    // Ends well, though it was asked to end.
    mount(std::string("trap 'exit 0' TERM; ") + mountedAtX + "; while :; do sleep 0.01; done");
    expectError(-5, "diskImage.error.timeout");
}

TEST_F(DiskImageMounting, ReadsBothOutputsAtTheSameTime) {
    mount(std::string("head -c 5000000 /dev/zero >&2; ") + mountedAtX +
          "; head -c 5000000 /dev/zero | tr '\\0' ' '; head -c 5000000 /dev/zero >&2");
    EXPECT_EQ(error, std::nullopt);
    EXPECT_EQ(events.back(), "mounted file:///mnt/x/");
}

TEST_F(DiskImageMounting, HasNothingToDoWithoutAVolume) {
    const std::thread::id caller = std::this_thread::get_id();
    std::thread::id calledOn;
    bool failed = true;
    service->unmountVolume(std::nullopt, [&](const std::optional<QMError>& failure) {
        calledOn = std::this_thread::get_id();
        failed = failure.has_value();
    });
    EXPECT_EQ(calledOn, caller);
    EXPECT_FALSE(failed);
    service->unmountVolume(std::nullopt, {});
    isDone = true;
    serveMainQueue();
    EXPECT_TRUE(events.empty());
    EXPECT_FALSE(tool.wasRun());
}

TEST_F(DiskImageMounting, KeepsTheServiceWhileItWorks) {
    tool.says(mountedAtX);
    bool done = false;
    QMDiskImageService::init({tool.path(), 2min})
        ->mountDiskImage(tool.image(), [&](const std::optional<FileURL>&,
                                           const std::optional<QMError>&) { done = true; });
    DispatchQueue::runMainQueueUntil([&] { return done; });
    EXPECT_TRUE(events[0].starts_with("another's "));
}

TEST_F(DiskImageMounting, RunsManyAtATime) {
    tool.says("number=$(basename \"$2\" .dmg); echo '<plist><dict><key>system-entities</key>"
              "<array><dict><key>mount-point</key><string>/mnt/'$number'</string></dict></array>"
              "</dict></plist>'");
    const TemporaryFolder folder;
    std::size_t right = 0;
    std::size_t done = 0;
    for (int i = 0; i < 20; ++i) {
        const std::string name = std::to_string(i);
        service->mountDiskImage(
            folder.file(name + ".dmg"),
            [&, name](const std::optional<FileURL>& url, const std::optional<QMError>&) {
                ++done;
                right += url && url->path() == "/mnt/" + name ? 1U : 0U;
            });
    }
    DispatchQueue::runMainQueueUntil([&] { return done == 20; });
    EXPECT_EQ(right, 20U);
    // Updates at the same moment may be lost, but never the last one.
    EXPECT_FALSE(service->mountedImages().empty());
    EXPECT_EQ(events.size(), 20U);
}

} // namespace
