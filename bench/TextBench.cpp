// SPDX-License-Identifier: Apache-2.0
#include "cli/Console.h"
#include "cli/QMCLIArguments.h"
#include "platform/ByteCountFormatter.h"
#include "platform/Collation.h"
#include "platform/DateFormatter.h"
#include "platform/Json.h"

#include <chrono>

#include <benchmark/benchmark.h>

namespace {

void dateText(benchmark::State& state) {
    const platform::DateFormatter formatter("yyyy-MM-dd HH:mm:ss");
    platform::Date date{std::chrono::seconds(1'700'000'000)};
    for (auto _ : state) {
        benchmark::DoNotOptimize(formatter.stringFromDate(date));
        date += std::chrono::seconds(61);
    }
}
BENCHMARK(dateText);

void byteCountText(benchmark::State& state) {
    for (auto _ : state) {
        benchmark::DoNotOptimize(platform::ByteCountFormatter::fileStyle(123'456'789));
    }
}
BENCHMARK(byteCountText);

void nameOrder(benchmark::State& state) {
    for (auto _ : state) {
        benchmark::DoNotOptimize(
            platform::Collation::localizedCaseInsensitiveCompare("Photo 12.jpg", "photo 9.JPG"));
    }
}
BENCHMARK(nameOrder);

void absolutePath(benchmark::State& state) {
    for (auto _ : state) {
        benchmark::DoNotOptimize(qm_absolutePath("some/file.txt"));
    }
}
BENCHMARK(absolutePath);

void commandLine(benchmark::State& state) {
    const QMCLIStrings words(static_cast<std::size_t>(state.range(0)), "some/file.txt");
    for (auto _ : state) {
        const auto global = qm_readGlobalArguments(words);
        benchmark::DoNotOptimize(qm_readCommandArguments(global.remaining, global.options));
    }
}
BENCHMARK(commandLine)->Arg(1)->Arg(10'000);

void jsonRecords(benchmark::State& state) {
    using platform::Json;
    const Json record = Json::Object{{"name", "some file.txt"}, {"size", std::uint64_t{12'345}}};
    const Json records = Json::Array(static_cast<std::size_t>(state.range(0)), record);
    for (auto _ : state) {
        std::string error;
        benchmark::DoNotOptimize(records.serialized(error));
    }
}
BENCHMARK(jsonRecords)->Arg(1)->Arg(10'000);

} // namespace
