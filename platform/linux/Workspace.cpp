// SPDX-License-Identifier: Apache-2.0
#include "platform/Workspace.h"

#include "platform/FileManager.h"
#include "platform/Format.h"
#include "platform/linux/DesktopEntry.h"
#include "platform/linux/DetachedProcess.h"
#include "platform/linux/MessageBus.h"
#include "platform/linux/XdgFolders.h"

namespace platform::Workspace {
namespace {

// An entry beyond this size is none that anyone wrote.
constexpr std::size_t maximumSize = std::size_t{1} << 20;

// Enough for a bus that is there; the launch may keep nobody waiting.
constexpr std::chrono::seconds connectTimeout{1};

// The bus forgets what a caller who left has asked of an application that is still starting.
constexpr std::chrono::seconds startTimeout{25};

// The first file of the name that can be read decides, also when it says that the application is
// deleted.
std::optional<DesktopEntry> entryOf(const std::string& application) {
    for (const std::string& folder : XdgFolders::dataFolders()) {
        const auto contents = FileManager::contentsAtPath(
            format("{}/applications/{}.desktop", folder, application), maximumSize);
        if (contents) {
            return DesktopEntry::parse(charactersOf(*contents));
        }
    }
    return std::nullopt;
}

void activateThroughBus(const std::string& application) {
    auto bus = MessageBus::connectToSession(std::chrono::steady_clock::now() + connectTimeout);
    if (auto* connected = std::get_if<MessageBus>(&bus)) {
        const bool isSent = connected->post({.destination = application,
                                             .path = objectPathForName(application),
                                             .interface = "org.freedesktop.Application",
                                             .member = "Activate",
                                             .startsDestination = true,
                                             .text = std::nullopt,
                                             .descriptor = std::nullopt,
                                             .options = activationOptions()});
        if (isSent) {
            DetachedProcess::keepOpen(connected->descriptor(), startTimeout);
        }
    }
}

} // namespace

bool openApplication(const std::string& application) {
    const auto entry = entryOf(application);
    if (!entry || (!entry->requiredProgram.empty() &&
                   !DetachedProcess::findProgram(entry->requiredProgram))) {
        return false;
    }
    if (entry->isBusActivatable) {
        activateThroughBus(application);
    } else {
        DetachedProcess::start(entry->command, entry->workingDirectory);
    }
    return true;
}

} // namespace platform::Workspace
