// SPDX-License-Identifier: Apache-2.0
#include "cli/Console.h"

#include "platform/FileManager.h"
#include "platform/PathString.h"
#include "platform/StandardStreams.h"

#include <cerrno>
#include <utility>

namespace {

bool colorEnabled = true;
int outputError = 0;

// Called directly after a call that writes to standard output, as others change the reason.
void noteOutcome(bool isWritten) {
    if (!isWritten && outputError == 0) {
        outputError = errno;
    }
}

// In one piece, so that lines of processes that share a log do not mix.
void write(std::FILE* stream, std::string_view text) {
    const bool isWritten = std::fwrite(text.data(), 1, text.size(), stream) == text.size();
    noteOutcome(isWritten || stream != stdout);
}

void writeElement(std::string_view before, const platform::Json& element) {
    std::string error;
    write(stdout, std::string(before).append(element.serializedAsElement(error).value()));
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

void QMCLIRecords::add(platform::Json record) {
    if (!m_first) {
        m_first = std::move(record);
        return;
    }
    if (!m_isArray) {
        writeElement("[\n", *m_first);
        m_isArray = true;
    }
    writeElement(",\n", record);
}

void QMCLIRecords::end() const {
    if (m_isArray) {
        write(stdout, "\n]\n");
    } else if (m_first) {
        qm_json(*m_first);
    }
}

int qm_flush() {
    noteOutcome(std::fflush(stdout) == 0);
    return outputError;
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
