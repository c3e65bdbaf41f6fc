// SPDX-License-Identifier: Apache-2.0
#include "bench/CachedFile.h"
#include "foundation/QMData.h"
#include "platform/Digest.h"
#include "services/QMChecksumService.h"

#include <string>

#include <benchmark/benchmark.h>

namespace {

void checksumOfFile(benchmark::State& state) {
    const auto size = static_cast<std::size_t>(state.range(1));
    const CachedFile file(size);
    const auto algorithm = static_cast<QMChecksumAlgorithm>(state.range(0));
    state.SetLabel(std::string(QMChecksumService::displayNameForAlgorithm(algorithm)));
    for (auto _ : state) {
        benchmark::DoNotOptimize(QMChecksumService::checksumForFileAtPath(file.path(), algorithm));
    }
    state.SetBytesProcessed(state.iterations() * static_cast<std::int64_t>(size));
}
BENCHMARK(checksumOfFile)->ArgsProduct({{0, 1, 2, 3}, {0, 4096, 64 << 20}});

void digestOfMemory(benchmark::State& state) {
    const platform::Data bytes(static_cast<std::size_t>(state.range(0)));
    for (auto _ : state) {
        benchmark::DoNotOptimize(qm_sha256(bytes));
    }
    state.SetBytesProcessed(state.iterations() * state.range(0));
}
BENCHMARK(digestOfMemory)->Arg(0)->Arg(65536);

} // namespace
