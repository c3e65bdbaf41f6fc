// SPDX-License-Identifier: Apache-2.0
// What it costs to have files read by other processes, over what reading them costs, and what
// several of these processes are good for.
#include "bench/CachedFile.h"
#include "platform/linux/worker/ImageQuestion.h"

#include <atomic>
#include <string>
#include <thread>
#include <utility>
#include <vector>

#include <benchmark/benchmark.h>

namespace {

using platform::worker::MediaWorker;

MediaWorker::Settings settings(std::int64_t processes) {
    MediaWorker::Settings result;
    result.program = QM_TEST_MEDIA_WORKER;
    result.processes = static_cast<unsigned>(processes);
    return result;
}

/// Has `count` files read, `jobs` of them at a time.
void readAll(MediaWorker& worker, const std::string& path, int count, std::int64_t jobs) {
    std::atomic<int> next = 0;
    std::vector<std::thread> threads;
    while (std::cmp_less(threads.size(), jobs)) {
        threads.emplace_back([&] {
            while (next++ < count) {
                benchmark::DoNotOptimize(imageProperties(worker, path, false));
            }
        });
    }
    for (std::thread& thread : threads) {
        thread.join();
    }
}

/// A thousand files, with this many processes and jobs.
void mediaWorker(benchmark::State& state, const char* words) {
    constexpr int count = 1000;
    const CachedFile file{std::string_view(words)};
    MediaWorker worker(settings(state.range(0)));
    for (auto _ : state) {
        readAll(worker, file.path(), count, state.range(1));
    }
    state.SetItemsProcessed(state.iterations() * count);
}

void combinations(benchmark::internal::Benchmark* benchmark) {
    benchmark->ArgNames({"processes", "jobs"})->UseRealTime()->Unit(benchmark::kMillisecond);
    for (const auto& [processes, jobs] :
         {std::pair(1, 1), std::pair(2, 8), std::pair(4, 8), std::pair(8, 8)}) {
        benchmark->Args({processes, jobs});
    }
}

// Nothing to read, and about what an image takes.
BENCHMARK_CAPTURE(mediaWorker, nothing, "nothing")->Apply(combinations);
BENCHMARK_CAPTURE(mediaWorker, image, "work 50")->Apply(combinations);

/// Starting a process and having the first file read.
void startOfMediaWorker(benchmark::State& state) {
    const CachedFile file(std::string_view("width 1"));
    for (auto _ : state) {
        MediaWorker worker(settings(1));
        benchmark::DoNotOptimize(imageProperties(worker, file.path(), false));
    }
}
BENCHMARK(startOfMediaWorker)->UseRealTime()->Unit(benchmark::kMillisecond);

} // namespace
