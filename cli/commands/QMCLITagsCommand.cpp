// SPDX-License-Identifier: Apache-2.0
#include "cli/commands/QMCLITagsCommand.h"

#include "cli/Console.h"
#include "foundation/QMString.h"
#include "platform/FileManager.h"
#include "platform/PathString.h"
#include "services/QMTagService.h"

#include <algorithm>
#include <functional>

namespace {

using platform::Json;
using Tags = QMTagService::Tags;

constexpr std::int32_t usageStatus = 10;

struct File {
    std::string path;
    std::string name;
};

using Action = std::function<void(const File&)>;

// The pieces between commas that are not empty; blanks belong to a name.
Tags splitAtCommas(std::string_view text) {
    Tags pieces;
    while (!text.empty()) {
        const auto end = text.find(',');
        if (end != 0) {
            pieces.emplace_back(text.substr(0, end));
        }
        text.remove_prefix(end == std::string_view::npos ? text.size() : end + 1);
    }
    return pieces;
}

void clearTags(const File& file) {
    QMError error;
    if (QMTagService::setTags({}, file.path, &error)) {
        qm_success("Tags cleared: {}", file.name);
    } else {
        qm_error("Failed to clear tags: {}", error.localizedDescription);
    }
}

void addTag(const std::string& tag, const File& file) {
    const Tags tags = QMTagService::tagsForPath(file.path);
    QMError error;
    if (std::ranges::find(tags, tag) != tags.end()) {
        qm_dim("Tag \"{}\" already exists on {}", tag, file.name);
    } else if (QMTagService::addTag(tag, file.path, &error)) {
        qm_success("Added tag \"{}\" to {}", tag, file.name);
    } else {
        qm_error("Failed to add tag: {}", error.localizedDescription);
    }
}

void removeTag(const std::string& tag, const File& file) {
    QMError error;
    if (QMTagService::removeTag(tag, file.path, &error)) {
        qm_success("Removed tag \"{}\" from {}", tag, file.name);
    } else {
        qm_error("Failed to remove tag: {}", error.localizedDescription);
    }
}

void setTags(const Tags& tags, const File& file) {
    QMError error;
    if (QMTagService::setTags(tags, file.path, &error)) {
        qm_success("Tags set: {}", qm_joined(tags, ", "));
    } else {
        qm_error("Failed to set tags: {}", error.localizedDescription);
    }
}

void showTags(const File& file, bool json) {
    const Tags tags = QMTagService::tagsForPath(file.path);
    if (json) {
        qm_json(Json::Object{{"file", file.name},
                             {"path", file.path},
                             {"tags", Json::Array(tags.begin(), tags.end())}});
    } else if (tags.empty()) {
        qm_dim("{}: (no tags)", file.name);
    } else {
        qm_print("{}: {}", file.name, qm_joined(tags, ", "));
    }
}

// The one action for all files, by the precedence of the options.
Action chosenAction(const QMCLIOptions& options) {
    if (qm_isFlagSet(options, "clear")) {
        return clearTags;
    }
    if (const auto add = options.find("add"); add != options.end()) {
        return [&tag = add->second](const File& file) { addTag(tag, file); };
    }
    if (const auto remove = options.find("remove"); remove != options.end()) {
        return [&tag = remove->second](const File& file) { removeTag(tag, file); };
    }
    if (const auto set = options.find("set"); set != options.end()) {
        return [tags = splitAtCommas(set->second)](const File& file) { setTags(tags, file); };
    }
    return [json = qm_isFlagSet(options, "json")](const File& file) { showTags(file, json); };
}

} // namespace

std::int32_t QMCLITagsCommand::runWithArguments(const QMCLIStrings& arguments,
                                                const QMCLIOptions& options) {
    if (qm_isFlagSet(options, "list")) {
        return listAllTags(qm_isFlagSet(options, "json"));
    }
    if (arguments.empty()) {
        qm_error("No file specified. Usage: {}", usage());
        return usageStatus;
    }
    const Action action = chosenAction(options);
    for (const std::string& argument : arguments) {
        const std::string path = qm_absolutePath(argument);
        if (platform::FileManager::fileExistsAtPath(path)) {
            action({path, platform::PathString::lastPathComponent(path)});
        } else {
            qm_error("File not found: {}", path);
        }
    }
    return 0;
}

std::int32_t QMCLITagsCommand::listAllTags(bool json) {
    Tags names;
    for (const platform::PropertyList& definition : QMTagService::allAvailableTags()) {
        const platform::PropertyList* const name = definition.valueForKey("n");
        if (name != nullptr && name->string() != nullptr && !name->string()->empty()) {
            names.push_back(*name->string());
        }
    }
    if (json) {
        qm_json(Json::Array(names.begin(), names.end()));
        return 0;
    }
    qm_bold("Available tags:");
    for (const std::string& name : names) {
        qm_print("  {}", name);
    }
    return 0;
}
