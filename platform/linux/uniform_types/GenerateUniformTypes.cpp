// SPDX-License-Identifier: Apache-2.0
// Compiles the table of uniform types into constant arrays, so that the program itself reads
// and parses nothing. A mistake in the table stops the build with one line that names it.
#include "platform/linux/Ascii.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <exception>
#include <filesystem>
#include <fstream>
#include <functional>
#include <limits>
#include <map>
#include <optional>
#include <sstream>
#include <stdexcept>
#include <string>
#include <string_view>
#include <system_error>
#include <utility>
#include <vector>

namespace {

using platform::lowercaseASCII;

constexpr std::string_view headerLine =
    "identifier\tconforms_to\textensions\tmime\tenglish_description";
constexpr std::size_t columnCount = 5;

/// Indices are written as 16-bit numbers, the largest of which means "none".
constexpr std::size_t maximumCount = std::numeric_limits<std::uint16_t>::max();

/// One row of the table. `parents` are indices into the table.
struct Row {
    std::size_t line = 0;
    std::string identifier;
    std::vector<std::string> parentNames;
    std::vector<std::string> extensions;
    std::string mime;
    std::string description;
    std::vector<std::size_t> parents;
};

/// Rows in the order of the file, and their indices by lower-cased identifier.
struct Table {
    std::vector<Row> rows;
    std::map<std::string, std::size_t, std::less<>> byIdentifier;
};

/// The types one extension stands for.
struct Candidates {
    std::optional<std::size_t> file;
    std::optional<std::size_t> folder;
    std::size_t line = 0;
};

using Extensions = std::map<std::string, Candidates, std::less<>>;

[[noreturn]] void fail(std::size_t line, const std::string& what) {
    throw std::runtime_error(std::to_string(line) + ": " + what);
}

std::string inQuotes(std::string_view text) {
    return std::string(1, '\'').append(text).append(1, '\'');
}

std::vector<std::string> split(std::string_view text, char separator) {
    std::vector<std::string> parts;
    for (;;) {
        const std::size_t end = text.find(separator);
        parts.emplace_back(text.substr(0, end));
        if (end == std::string_view::npos) {
            return parts;
        }
        text.remove_prefix(end + 1);
    }
}

// ---- Reading ----

std::vector<std::string> listOf(std::string_view column, std::size_t line) {
    if (column.empty()) {
        return {};
    }
    std::vector<std::string> items = split(column, ',');
    for (const std::string& item : items) {
        if (item.empty() || item.find(' ') != std::string::npos) {
            fail(line, "bad item in the list " + inQuotes(column));
        }
    }
    return items;
}

std::string preferredMime(std::string_view column, std::size_t line) {
    const std::vector<std::string> types = listOf(column, line);
    return types.empty() ? std::string() : types.front().substr(0, types.front().find(';'));
}

void checkText(std::string_view text, std::size_t line) {
    const bool clean = std::none_of(text.begin(), text.end(), [](char character) {
        return (character >= 0 && character < ' ' && character != '\t') || character == '\x7f';
    });
    if (!clean) {
        fail(line, "control character");
    }
}

Row parseRow(std::string_view text, std::size_t line) {
    checkText(text, line);
    const std::vector<std::string> columns = split(text, '\t');
    if (columns.size() != columnCount) {
        fail(line, "expected " + std::to_string(columnCount) + " columns, found " +
                       std::to_string(columns.size()));
    }
    if (columns[0].empty()) {
        fail(line, "missing identifier");
    }
    return {line,
            columns[0],
            listOf(columns[1], line),
            listOf(columns[2], line),
            preferredMime(columns[3], line),
            columns[4],
            {}};
}

void addRow(Table& table, Row row) {
    if (!table.byIdentifier.emplace(lowercaseASCII(row.identifier), table.rows.size()).second) {
        fail(row.line, "duplicate identifier " + inQuotes(row.identifier));
    }
    table.rows.push_back(std::move(row));
}

Table readTable(std::istream& input) {
    Table table;
    std::string text;
    std::size_t line = 0;
    while (std::getline(input, text)) {
        ++line;
        if (line == 1 && text != headerLine) {
            fail(line, "unexpected header line");
        }
        if (line > 1) {
            addRow(table, parseRow(text, line));
        }
    }
    if (input.bad()) {
        throw std::runtime_error("cannot be read");
    }
    if (table.rows.size() >= maximumCount) {
        fail(line, "too many types");
    }
    return table;
}

// ---- Checking ----

void resolveParents(Table& table) {
    for (Row& row : table.rows) {
        for (const std::string& name : row.parentNames) {
            const auto parent = table.byIdentifier.find(lowercaseASCII(name));
            if (parent == table.byIdentifier.end()) {
                fail(row.line,
                     "unknown parent " + inQuotes(name) + " of " + inQuotes(row.identifier));
            }
            row.parents.push_back(parent->second);
        }
    }
}

/// Which types `start` descends from; contains `start` only when the table has a cycle.
std::vector<bool> ancestorsOf(const Table& table, std::size_t start) {
    std::vector<bool> seen(table.rows.size(), false);
    std::vector<std::size_t> open{start};
    while (!open.empty()) {
        const std::size_t current = open.back();
        open.pop_back();
        for (const std::size_t parent : table.rows[current].parents) {
            if (!seen[parent]) {
                seen[parent] = true;
                open.push_back(parent);
            }
        }
    }
    return seen;
}

std::size_t requiredType(const Table& table, std::string_view identifier) {
    const auto found = table.byIdentifier.find(identifier);
    if (found == table.byIdentifier.end()) {
        fail(1, "the table lacks " + inQuotes(identifier));
    }
    return found->second;
}

void addExtensions(Extensions& extensions, const Row& row, std::size_t index, bool isFile,
                   bool isFolder) {
    for (const std::string& extension : row.extensions) {
        Candidates& candidates = extensions[lowercaseASCII(extension)];
        candidates.line = row.line;
        // The first row that claims an extension keeps it: the order of the table decides.
        if (isFile && !candidates.file) {
            candidates.file = index;
        }
        if (isFolder && !candidates.folder) {
            candidates.folder = index;
        }
    }
}

Extensions resolveExtensions(const Table& table) {
    const std::size_t data = requiredType(table, "public.data");
    const std::size_t directory = requiredType(table, "public.directory");
    Extensions extensions;
    for (std::size_t index = 0; index < table.rows.size(); ++index) {
        const Row& row = table.rows[index];
        const std::vector<bool> ancestors = ancestorsOf(table, index);
        if (ancestors[index]) {
            fail(row.line, inQuotes(row.identifier) + " descends from itself");
        }
        addExtensions(extensions, row, index, ancestors[data] || index == data,
                      ancestors[directory] || index == directory);
    }
    for (const auto& [extension, candidates] : extensions) {
        if (!candidates.file && !candidates.folder) {
            fail(candidates.line, "no type of files or folders for " + inQuotes(extension));
        }
    }
    return extensions;
}

// ---- Writing ----

std::string literal(std::string_view text) {
    std::string result = "\"";
    for (const char character : text) {
        if (character == '"' || character == '\\' || character == '?') {
            result += '\\';
        }
        if (character >= ' ') {
            result += character;
            continue;
        }
        // Three octal digits end an escape by themselves, whatever character follows.
        std::array<char, 5> escape{};
        static_cast<void>(
            std::snprintf(escape.data(), escape.size(), "\\%03o",
                          static_cast<unsigned>(static_cast<unsigned char>(character))));
        result += escape.data();
    }
    return result + '"';
}

/// The place of each row in the written, sorted array.
std::vector<std::size_t> sortedPlaces(const Table& table) {
    std::vector<std::size_t> places(table.rows.size());
    std::size_t place = 0;
    for (const auto& [identifier, index] : table.byIdentifier) {
        places[index] = place++;
    }
    return places;
}

void writeTypes(std::ostream& output, const Table& table, const std::vector<std::size_t>& places) {
    std::ostringstream types;
    std::ostringstream parents;
    std::size_t parentCount = 0;
    for (const auto& [identifier, index] : table.byIdentifier) {
        const Row& row = table.rows[index];
        types << "    {" << literal(row.identifier) << ", " << literal(row.description) << ", "
              << literal(row.mime) << ", " << parentCount << ", " << row.parents.size() << "},\n";
        for (const std::size_t parent : row.parents) {
            parents << "    " << places[parent] << ", // " << row.identifier << '\n';
        }
        parentCount += row.parents.size();
    }
    if (parentCount >= maximumCount) {
        fail(1, "too many parents");
    }
    output << "constexpr TypeRecord types[] = {\n" << types.str() << "};\n\n";
    output << "constexpr std::uint16_t parents[] = {\n" << parents.str() << "};\n\n";
}

void writeExtensions(std::ostream& output, const Extensions& extensions,
                     const std::vector<std::size_t>& places) {
    const auto place = [&places](const std::optional<std::size_t>& index) {
        return index ? std::to_string(places[*index]) : "noType";
    };
    output << "constexpr ExtensionRecord extensions[] = {\n";
    for (const auto& [extension, candidates] : extensions) {
        output << "    {" << literal(extension) << ", " << place(candidates.file) << ", "
               << place(candidates.folder) << "},\n";
    }
    output << "};\n";
}

std::string generate(std::istream& input) {
    Table table = readTable(input);
    resolveParents(table);
    const Extensions extensions = resolveExtensions(table);
    const std::vector<std::size_t> places = sortedPlaces(table);
    std::ostringstream output;
    output << "// Generated from uniform-types.tsv; changes belong there.\n";
    writeTypes(output, table, places);
    writeExtensions(output, extensions, places);
    return output.str();
}

/// Writes the whole text or leaves no file, lest a later build take half a table for a whole one.
void writeFile(const char* path, const std::string& text) {
    std::ofstream output(path, std::ios::binary | std::ios::trunc);
    output << text;
    output.close();
    if (!output) {
        // Only what this program may have made: the path could name a device.
        std::error_code ignored;
        if (std::filesystem::is_regular_file(std::filesystem::symlink_status(path, ignored))) {
            std::filesystem::remove(path, ignored);
        }
        throw std::runtime_error("cannot be written");
    }
}

int report(const char* path, const char* what) {
    static_cast<void>(std::fprintf(stderr, "%s: %s\n", path, what));
    return 1;
}

} // namespace

int main(int argc, char* argv[]) {
    if (argc != 3) {
        return report("usage", "generate_uniform_types TABLE.tsv OUTPUT.inc");
    }
    std::string text;
    try {
        std::ifstream input(argv[1], std::ios::binary);
        if (!input) {
            return report(argv[1], "cannot be read");
        }
        text = generate(input);
    } catch (const std::exception& error) {
        return report(argv[1], error.what());
    }
    try {
        writeFile(argv[2], text);
    } catch (const std::exception& error) {
        return report(argv[2], error.what());
    }
    return 0;
}
