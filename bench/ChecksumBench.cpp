// SPDX-License-Identifier: Apache-2.0
#include "foundation/QMData.h"
#include "platform/Digest.h"
#include "services/QMChecksumService.h"

#include <cstdio>
#include <cstdlib>
#include <string>
#include <vector>

#include <unistd.h>

#include <benchmark/benchmark.h>

namespace {

/// A file of zero bytes that stays in the page cache.
class CachedFile {
public:
    explicit CachedFile(std::size_t size) {
        const int descriptor = ::mkstemp(m_path.data());
        const std::vector<char> piece(std::size_t{1} << 20);
        for (std::size_t written = 0; written < size;) {
            const ssize_t count =
                ::write(descriptor, piece.data(), std::min(piece.size(), size - written));
            if (count <= 0) {
                std::abort();
            }
            written += static_cast<std::size_t>(count);
        }
        ::close(descriptor);
    }
    CachedFile(const CachedFile&) = delete;
    CachedFile& operator=(const CachedFile&) = delete;
    CachedFile(CachedFile&&) = delete;
    CachedFile& operator=(CachedFile&&) = delete;
    ~CachedFile() { ::unlink(m_path.c_str()); }
    [[nodiscard]] const std::string& path() const { return m_path; }

private:
    std::string m_path = "/tmp/qm-bench-XXXXXX";
};

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
