// SPDX-License-Identifier: Apache-2.0
#include "model/QMFileItem.h"
#include "platform/UniformType.h"

#include <benchmark/benchmark.h>

namespace {

void itemOfFile(benchmark::State& state) {
    const auto url = platform::FileURL::fromPath("/etc/passwd");
    for (auto _ : state) {
        benchmark::DoNotOptimize(QMFileItem::initWithURL(url));
    }
}
BENCHMARK(itemOfFile);

void typeOfExtension(benchmark::State& state) {
    using platform::UniformType::ItemKind;
    for (auto _ : state) {
        benchmark::DoNotOptimize(platform::UniformType::identifierForItem(ItemKind::file, "JPEG"));
    }
}
BENCHMARK(typeOfExtension);

void conformance(benchmark::State& state) {
    for (auto _ : state) {
        benchmark::DoNotOptimize(
            platform::UniformType::conformsTo("org.gnu.gnu-zip-archive", "public.archive"));
    }
}
BENCHMARK(conformance);

} // namespace
