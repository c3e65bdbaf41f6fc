// SPDX-License-Identifier: Apache-2.0
#include "cli/Console.h"

#include "platform/FileManager.h"
#include "platform/PathString.h"
#include "platform/StandardStreams.h"

#include <utility>

namespace {

bool colorEnabled = true;

// In one piece, so that lines of processes that share a log do not mix.
void write(std::FILE* stream, const std::string& text) {
    static_cast<void>(std::fwrite(text.data(), 1, text.size(), stream));
}

} // namespace

void qm_set_color_enabled(bool enabled) {
    colorEnabled = enabled;
}

bool qm_is_color_enabled() {
    return colorEnabled && platform::StandardStreams::outputIsTerminal();
}

void qm_vprint(std::FILE* stream, std::string_view prefix, std::string_view format,
               std::span<const platform::FormatArgument> arguments) {
    const bool styled = !prefix.empty() && qm_is_color_enabled();
    std::string line(styled ? prefix : std::string_view());
    line.append(platform::formatArguments(format, arguments));
    line.append(styled ? console::reset : std::string_view());
    line.push_back('\n');
    write(stream, line);
}

void qm_json(const platform::Json& object) {
    std::string error;
    auto document = object.serialized(error);
    if (!document) {
        qm_error("JSON serialization error: {}", error);
        return;
    }
    document->push_back('\n');
    write(stdout, *document);
}

void qm_jsonRecords(platform::Json::Array records) {
    if (records.size() == 1) {
        qm_json(records.front());
    } else if (!records.empty()) {
        qm_json(std::move(records));
    }
}

std::string qm_absolutePath(const std::string& path) {
    if (path.starts_with('/')) {
        return path;
    }
    const std::string directory = platform::FileManager::currentDirectoryPath();
    if (directory.empty()) {
        // The system still finds what it can by the operand itself.
        return path;
    }
    namespace PathString = platform::PathString;
    return PathString::standardizing(PathString::appendingPathComponent(directory, path));
}
