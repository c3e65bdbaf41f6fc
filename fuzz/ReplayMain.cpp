// SPDX-License-Identifier: Apache-2.0
// Runs a fuzz target without libFuzzer: on every seed of the folder that is given, and on a fixed
// sequence of mutations of each, so that every build has a short, repeatable round of fuzzing.
#include "fuzz/Fuzzing.h"

#include <algorithm>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <random>

namespace {

using Input = std::vector<std::uint8_t>;

constexpr int mutationsPerSeed = 500;
constexpr std::size_t maximumSize = 4096;

void run(const Input& input) {
    LLVMFuzzerTestOneInput(input.data(), input.size());
}

std::vector<Input> seedsIn(const std::filesystem::path& folder) {
    std::vector<std::filesystem::path> paths;
    for (const auto& entry : std::filesystem::directory_iterator(folder)) {
        paths.push_back(entry.path());
    }
    std::sort(paths.begin(), paths.end());
    std::vector<Input> seeds;
    for (const auto& path : paths) {
        std::ifstream file(path, std::ios::binary);
        seeds.emplace_back(std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>());
    }
    return seeds;
}

class Mutator {
public:
    void mutate(Input& input) {
        const std::size_t at = number(input.size() + 1);
        switch (number(4)) {
        case 0: input.insert(input.begin() + offset(at), byte()); break;
        case 1: input.resize(at); break;
        case 2:
            if (at < input.size()) {
                input[at] = byte();
            }
            break;
        default:
            if (at < input.size()) {
                input[at] = static_cast<std::uint8_t>(input[at] ^ (1U << number(8)));
            }
        }
        input.resize(std::min(input.size(), maximumSize));
    }
    std::size_t number(std::size_t below) { return m_random() % below; }

private:
    std::uint8_t byte() { return static_cast<std::uint8_t>(number(256)); }
    static std::ptrdiff_t offset(std::size_t at) { return static_cast<std::ptrdiff_t>(at); }
    // The default seed on purpose: a failure must come again.
    std::mt19937 m_random; // NOLINT(cert-msc51-cpp)
};

} // namespace

int main(int argc, char* argv[]) {
    const std::vector<Input> seeds = argc == 2 ? seedsIn(argv[1]) : std::vector<Input>();
    if (seeds.empty()) {
        std::fputs("no seeds: give a folder that has some\n", stderr);
        return 1;
    }
    // What the code under test prints is of no interest.
    if (std::freopen("/dev/null", "w", stdout) == nullptr ||
        std::freopen("/dev/null", "w", stderr) == nullptr) {
        return 1;
    }
    Mutator mutator;
    for (const Input& seed : seeds) {
        run(seed);
        for (int i = 0; i < mutationsPerSeed; ++i) {
            Input input = seed;
            for (std::size_t steps = 1 + mutator.number(8); steps > 0; --steps) {
                mutator.mutate(input);
            }
            run(input);
        }
    }
    return 0;
}
