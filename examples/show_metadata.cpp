// SPDX-License-Identifier: Apache-2.0
// Usage: show_metadata [--keys KEY,...] [--jobs N] FILE...
// Tells what is in files as an application would, in one JSON array in the order of the arguments,
// with null for a file that nothing can be told of. --keys enables these keys alone, --jobs lets N
// files be read at a time. Status 10 for arguments that are not understood, 1 when nothing can be
// written or memory runs out.
#include "foundation/QMPreferencesKeys.h"
#include "platform/DispatchQueue.h"
#include "platform/Format.h"
#include "platform/Json.h"
#include "platform/UserDefaults.h"
#include "services/QMMetadataService.h"

#include <charconv>
#include <cstdio>
#include <map>
#include <new>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace {

using platform::Json;
using platform::PropertyList;
using platform::UserDefaults;

struct Options {
    std::vector<std::string> files;
    std::optional<PropertyList::Array> keys;
    std::size_t jobs = 1;
};

PropertyList::Array splitAtCommas(std::string_view list) {
    PropertyList::Array parts;
    for (auto comma = list.find(','); comma != list.npos; comma = list.find(',')) {
        parts.emplace_back(std::string(list.substr(0, comma)));
        list.remove_prefix(comma + 1);
    }
    parts.emplace_back(std::string(list));
    return parts;
}

std::optional<std::size_t> positiveNumber(std::string_view text) {
    std::size_t number = 0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number);
    const bool isWhole = error == std::errc() && end == text.data() + text.size();
    return isWhole && number > 0 ? std::optional(number) : std::nullopt;
}

std::optional<Options> optionsIn(const std::vector<std::string_view>& arguments) {
    Options options;
    for (std::size_t i = 0; i < arguments.size(); ++i) {
        const std::string_view argument = arguments[i];
        const bool isOption = argument == "--keys" || argument == "--jobs";
        if (!isOption) {
            options.files.emplace_back(argument);
        } else if (++i == arguments.size()) {
            return std::nullopt;
        } else if (argument == "--keys") {
            options.keys = splitAtCommas(arguments[i]);
        } else if (const auto jobs = positiveNumber(arguments[i])) {
            options.jobs = *jobs;
        } else {
            return std::nullopt;
        }
    }
    return options.files.empty() ? std::nullopt : std::optional(std::move(options));
}

// Settings of this process alone, in which every category has just these keys.
void enableOnly(const PropertyList::Array& keys) {
    static UserDefaults settings{std::string()};
    UserDefaults::setStandard(&settings);
    PropertyList::Dictionary enabled;
    for (std::int64_t category = QMMetadataCategoryImageRaster;
         category <= QMMetadataCategoryContact; ++category) {
        enabled.emplace(platform::format("QMMetadataEnabled_{}", category), keys);
    }
    settings.registerDefaults(std::move(enabled));
}

Json textOrNull(const std::optional<std::string>& text) {
    return text ? Json(*text) : Json(nullptr);
}

Json asJson(const std::string& path, const QMMetadataResult* result) {
    if (result == nullptr) {
        return nullptr;
    }
    Json::Array entries;
    for (const auto& entry : *result->entries) {
        entries.emplace_back(Json::Object{{"key", textOrNull(entry->key)},
                                          {"localizedKey", textOrNull(entry->localizedKey)},
                                          {"value", textOrNull(entry->value)},
                                          {"isPrimary", entry->isPrimary}});
    }
    return Json::Object{{"path", path},
                        {"category", std::int64_t{result->category}},
                        {"categoryName", textOrNull(result->categoryName)},
                        {"entries", std::move(entries)}};
}

/// An array that is printed as its elements come, in any order. Only those are kept for which an
/// earlier one is still missing, so that memory does not grow with the number of files.
class PrintedArray {
public:
    void set(std::size_t number, std::string element) {
        m_waiting.emplace(number, std::move(element));
        for (auto first = m_waiting.begin(); first != m_waiting.end() && first->first == m_printed;
             first = m_waiting.erase(first)) {
            std::printf("%s%s", m_printed++ == 0 ? "[\n" : ",\n", first->second.c_str());
        }
    }

    static void end() { std::puts("\n]"); }

private:
    std::map<std::size_t, std::string> m_waiting;
    std::size_t m_printed = 0;
};

/// Keeps as many extractions in flight as it may, until all files are done. Lives on the thread of
/// the main queue.
class Extractions {
public:
    explicit Extractions(Options wanted)
        : m_options(std::move(wanted)) {}

    /// Prints the results as an array in the order of the files. Throws std::bad_alloc when one
    /// of them did not fit into memory.
    void run() {
        // On the main queue, so that it is there before files can take up all descriptors.
        platform::DispatchQueue::asyncMain([this] { startSome(); });
        platform::DispatchQueue::runMainQueueUntil(
            [this] { return m_done == m_options.files.size(); });
        if (m_lacksMemory) {
            throw std::bad_alloc();
        }
        PrintedArray::end();
    }

private:
    void startSome() {
        while (m_next < m_options.files.size() && m_next - m_done < m_options.jobs) {
            start(m_next++);
        }
    }

    // Work of the main queue must not throw.
    void start(std::size_t number) {
        m_isStarting = true;
        const std::size_t doneBefore = m_done;
        try {
            const auto url = platform::FileURL::fromPath(m_options.files[number]);
            QMMetadataService::sharedService()->extractMetadataForFileItem(
                QMFileItem::initWithURL(url),
                [this, number](const std::shared_ptr<QMMetadataResult>& result) {
                    finish(number, result.get());
                });
        } catch (const std::bad_alloc&) {
            m_lacksMemory = true;
            m_done = doneBefore + 1;
        }
        m_isStarting = false;
    }

    void finish(std::size_t number, const QMMetadataResult* result) {
        ++m_done;
        // An answer that comes at once is followed by the next file anyway.
        if (!m_isStarting) {
            startSome();
        }
        // While the next file is read.
        try {
            // Of texts and numbers there is nothing to fail.
            std::string error;
            m_results.set(
                number, asJson(m_options.files[number], result).serializedAsElement(error).value());
        } catch (const std::bad_alloc&) {
            m_lacksMemory = true;
        }
    }

    Options m_options;
    PrintedArray m_results;
    std::size_t m_next = 0;
    std::size_t m_done = 0;
    bool m_isStarting = false;
    bool m_lacksMemory = false;
};

int run(const std::vector<std::string_view>& arguments) {
    auto options = optionsIn(arguments);
    if (!options) {
        std::fputs("Usage: show_metadata [--keys KEY,...] [--jobs N] FILE...\n", stderr);
        return 10;
    }
    if (options->keys) {
        enableOnly(*options->keys);
    }
    QMPreferencesKeys::registerDefaults();
    Extractions(*std::move(options)).run();
    if (std::fflush(stdout) != 0 || std::ferror(stdout) != 0) {
        std::perror("show_metadata");
        return 1;
    }
    return 0;
}

} // namespace

int main(int argc, char* argv[]) {
    try {
        return run({argv + 1, argv + argc});
    } catch (const std::bad_alloc&) {
        std::fputs("show_metadata: out of memory\n", stderr);
        return 1;
    }
}
