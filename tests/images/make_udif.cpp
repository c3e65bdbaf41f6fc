// SPDX-License-Identifier: Apache-2.0
// Usage: make_udif DISK IMAGE raw|zlib|bzip2|lzma|adc [TABLES]
// Writes the bytes of a disk as a UDIF image, for tests.
#include "tests/unit/support/UdifWriter.h"

#include <cstdio>
#include <fstream>
#include <iterator>
#include <map>
#include <string>

int main(int argc, char* argv[]) {
    const std::map<std::string, udif::Kind> kinds{
        {"raw", udif::Kind::raw},   {"zlib", udif::Kind::zlib}, {"bzip2", udif::Kind::bzip2},
        {"lzma", udif::Kind::lzma}, {"adc", udif::Kind::adc},
    };
    if (argc < 4 || !kinds.contains(argv[3])) {
        std::fputs("Usage: make_udif DISK IMAGE KIND [TABLES]\n", stderr);
        return 10;
    }
    std::ifstream disk(argv[1], std::ios::binary);
    const std::string bytes(std::istreambuf_iterator<char>(disk), {});
    udif::Options options;
    options.kind = kinds.at(argv[3]);
    options.tables = argc > 4 ? std::stoul(argv[4]) : 1;
    std::ofstream(argv[2], std::ios::binary) << udif::imageOf(bytes, options);
    return 0;
}
