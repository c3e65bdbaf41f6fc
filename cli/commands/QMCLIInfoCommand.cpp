// SPDX-License-Identifier: Apache-2.0
#include "cli/commands/QMCLIInfoCommand.h"

#include "cli/Console.h"
#include "foundation/QMString.h"
#include "model/QMFileItem.h"
#include "platform/DateFormatter.h"
#include "platform/FileManager.h"
#include "platform/FileURL.h"

#include <memory>
#include <optional>
#include <utility>

namespace {

using platform::Json;

constexpr std::int32_t usageStatus = 10;
constexpr std::string_view absent = "—";

enum class Mode : std::uint8_t { block, line, json };

Mode chosenMode(const QMCLIOptions& options) {
    if (qm_isFlagSet(options, "json")) {
        return Mode::json;
    }
    return qm_isFlagSet(options, "short") || qm_isFlagSet(options, "s") ? Mode::line : Mode::block;
}

std::optional<std::string> dateText(std::optional<platform::Date> date) {
    static const platform::DateFormatter formatter("yyyy-MM-dd HH:mm:ss");
    return date ? std::optional(formatter.stringFromDate(*date)) : std::nullopt;
}

std::string orDash(const std::optional<std::string>& text) {
    return text.value_or(std::string(absent));
}

std::string orEmpty(const std::optional<std::string>& text) {
    return text.value_or(std::string());
}

std::string sizeText(const QMFileItem& item) {
    return qm_humanReadableSize(static_cast<std::int64_t>(item.size()));
}

Json record(const QMFileItem& item) {
    Json::Object members{
        {"name", orEmpty(item.name())},
        {"path", orEmpty(item.path())},
        {"size", item.size()},
        {"kind", orEmpty(item.kind())},
        {"uti", orEmpty(item.uti())},
        {"isDirectory", item.isDirectory()},
        {"isHidden", item.isHidden()},
        {"isSymlink", item.isSymlink()},
        {"permissions", orEmpty(item.permissions())},
        {"posixPermissions", item.posixPermissions()},
        {"owner", orEmpty(item.ownerName())},
        {"group", orEmpty(item.groupName())},
        {"tags", Json::Array(item.tags().begin(), item.tags().end())},
    };
    if (auto created = dateText(item.creationDate())) {
        members.emplace_back("created", *std::move(created));
    }
    if (auto modified = dateText(item.modificationDate())) {
        members.emplace_back("modified", *std::move(modified));
    }
    return members;
}

void printLine(const QMFileItem& item) {
    qm_print("{}  {}  {}", sizeText(item), orDash(dateText(item.modificationDate())),
             orEmpty(item.name()));
}

void printBlock(const QMFileItem& item) {
    qm_bold("{}", orEmpty(item.name()));
    qm_print("  Path:         {}", orEmpty(item.path()));
    qm_print("  Size:         {} ({} bytes)", sizeText(item), item.size());
    qm_print("  Kind:         {}", orDash(item.kind()));
    qm_print("  UTI:          {}", orDash(item.uti()));
    qm_print("  Created:      {}", orDash(dateText(item.creationDate())));
    qm_print("  Modified:     {}", orDash(dateText(item.modificationDate())));
    qm_print("  Permissions:  {} ({:o})", orDash(item.permissions()), item.posixPermissions());
    qm_print("  Owner:        {}:{}", orDash(item.ownerName()), orDash(item.groupName()));
    if (!item.tags().empty()) {
        qm_print("  Tags:         {}", qm_joined(item.tags(), ", "));
    }
    if (item.isSymlink()) {
        qm_dim("  (Symbolic link)");
    }
    if (item.isPackage()) {
        qm_dim("  (macOS Package/Bundle)");
    }
}

// The item at `path`; an empty one when it is gone, or was never there. Scripts read its record.
std::shared_ptr<const QMFileItem> itemAtPath(const std::string& path) {
    auto item = QMFileItem::initWithURL(platform::FileURL::fromPath(path));
    return item ? item : std::make_shared<QMFileItem>();
}

void printRecords(const QMCLIStrings& arguments) {
    QMCLIRecords records;
    for (const std::string& argument : arguments) {
        const std::string path = qm_absolutePath(argument);
        if (!platform::FileManager::fileExistsAtPath(path)) {
            qm_error("File not found: {}", path);
        }
        records.add(record(*itemAtPath(path)));
    }
    records.end();
}

void printTexts(const QMCLIStrings& arguments, Mode mode) {
    for (const std::string& argument : arguments) {
        const std::string path = qm_absolutePath(argument);
        if (!platform::FileManager::fileExistsAtPath(path)) {
            qm_error("File not found: {}", path);
            continue;
        }
        const auto item = itemAtPath(path);
        if (mode == Mode::line) {
            printLine(*item);
            continue;
        }
        printBlock(*item);
        if (arguments.size() > 1) {
            qm_print("");
        }
    }
}

} // namespace

std::int32_t QMCLIInfoCommand::runWithArguments(const QMCLIStrings& arguments,
                                                const QMCLIOptions& options) {
    if (arguments.empty()) {
        qm_error("No file specified. Usage: {}", usage());
        return usageStatus;
    }
    const Mode mode = chosenMode(options);
    if (mode == Mode::json) {
        printRecords(arguments);
    } else {
        printTexts(arguments, mode);
    }
    return 0;
}
