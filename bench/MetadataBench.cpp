// SPDX-License-Identifier: Apache-2.0
#include "bench/BenchFolder.h"
#include "bench/CachedFile.h"
#include "foundation/QMPreferencesKeys.h"
#include "platform/DispatchQueue.h"
#include "services/QMMetadataService.h"
#include "services/QMTextSample.h"

#include <fstream>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include <benchmark/benchmark.h>

namespace {

constexpr std::string_view english =
    "The file layer doesn't ask what kind of program is using it; it answers the question it was "
    "asked, and nothing else. On 14 March 2019 the first version read 1,024 files a second — the "
    "current one reads more than 50,000, although “fast” was never the only goal.\n"
    "A well-known rule says: measure first. So we measured, e.g. with warm caches (twice), and "
    "then wrote down what we'd found.\n\n";

constexpr std::string_view russian =
    "Файловый слой не спрашивает, какая программа им пользуется: он отвечает на заданный вопрос и "
    "больше ни на что. Первая версия, написанная 14 марта 2019 года, читала тысячу файлов в "
    "секунду — нынешняя читает более 50 000, хотя «скорость» никогда не была единственной целью.\n";

constexpr std::string_view japanese = "ファイル層は、どのプログラムが利用しているかを尋ねません。質"
                                      "問にだけ答え、それ以外のことはしない。"
                                      "二〇一九年三月十四日に書かれた最初の版は毎秒千個のファイルを"
                                      "読みましたが、現在の版は五万個以上を"
                                      "読みます。速さだけが目的だったわけではありません。\n";

constexpr std::string_view source =
    "/// The sum of all values that are at least `limit`.\n"
    "template <class Number>\n"
    "Number sum_of_large(const std::vector<Number>& values, Number limit = Number{}) {\n"
    "    Number total = 0; // grows\n"
    "    for (std::size_t i = 0; i < values.size(); ++i) {\n"
    "        if (values[i] >= limit && !is_ignored(values[i])) {\n"
    "            total += values[i] * 1.5F;\n"
    "        }\n"
    "    }\n"
    "    return total; /* 0x1F, \"text\\n\" */\n"
    "}\n\n";

/// The text again and again, as long as a sample gets without cutting a character off.
std::string repeated(std::string_view text) {
    std::string result;
    while (!text.empty() && result.size() + text.size() <= QMTextSample::maximumLength) {
        result += text;
    }
    return result;
}

/// All that is told of a text file, from its path.
void textMetadata(benchmark::State& state, std::string_view text) {
    const std::string contents = repeated(text);
    const CachedFile file(contents);
    const auto service = QMMetadataService::sharedService();
    const auto keys = service->enabledKeysForCategory(QMMetadataCategoryText);
    for (auto _ : state) {
        QMMetadataEntries entries;
        QMMetadataService::sharedService()->extractTextMetadata(file.path(), *keys, entries);
        benchmark::DoNotOptimize(entries);
    }
    state.SetBytesProcessed(state.iterations() * static_cast<std::int64_t>(contents.size()));
}
BENCHMARK_CAPTURE(textMetadata, english, english);
BENCHMARK_CAPTURE(textMetadata, russian, russian);
BENCHMARK_CAPTURE(textMetadata, japanese, japanese);
BENCHMARK_CAPTURE(textMetadata, source, source);
BENCHMARK_CAPTURE(textMetadata, nothing, std::string_view());

/// Ten thousand files of source code, 4 KiB each, as items.
class SmallFiles {
public:
    SmallFiles() {
        constexpr int count = 10'000;
        constexpr std::size_t size = 4096;
        const std::string contents = repeated(source).substr(0, size);
        for (int number = 0; number < count; ++number) {
            const auto path = m_folder.path() / std::to_string(number).append(".cpp");
            std::ofstream(path, std::ios::binary) << contents;
            m_items.push_back(QMFileItem::initWithURL(platform::FileURL::fromPath(path.native())));
        }
    }
    [[nodiscard]] const std::vector<std::shared_ptr<QMFileItem>>& items() const { return m_items; }

private:
    BenchFolder m_folder;
    std::vector<std::shared_ptr<QMFileItem>> m_items;
};

/// Keeps `jobs` extractions in flight until all items are done.
class Driver {
public:
    Driver(const std::vector<std::shared_ptr<QMFileItem>>& items, std::size_t jobs)
        : m_items(items)
        , m_jobs(jobs) {}

    void run() {
        while (m_started < m_jobs) {
            startNext();
        }
        platform::DispatchQueue::runMainQueueUntil([this] { return m_done == m_items.size(); });
    }

private:
    void startNext() {
        QMMetadataService::sharedService()->extractMetadataForFileItem(
            m_items[m_started++], [this](const std::shared_ptr<QMMetadataResult>& result) {
                benchmark::DoNotOptimize(result->entries->size());
                ++m_done;
                if (m_started < m_items.size()) {
                    startNext();
                }
            });
    }

    const std::vector<std::shared_ptr<QMFileItem>>& m_items;
    std::size_t m_jobs;
    std::size_t m_started = 0;
    std::size_t m_done = 0;
};

void driver(benchmark::State& state) {
    static const SmallFiles files;
    QMPreferencesKeys::registerDefaults();
    for (auto _ : state) {
        Driver(files.items(), static_cast<std::size_t>(state.range(0))).run();
    }
    state.SetItemsProcessed(state.iterations() * static_cast<std::int64_t>(files.items().size()));
}
BENCHMARK(driver)->Arg(1)->Arg(2)->Arg(8)->UseRealTime()->Unit(benchmark::kMillisecond);

} // namespace
