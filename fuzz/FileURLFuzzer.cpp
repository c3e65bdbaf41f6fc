// SPDX-License-Identifier: Apache-2.0
#include "fuzz/Fuzzing.h"
#include "platform/FileURL.h"

#include <algorithm>

namespace {

using fuzzing::require;
using platform::FileURL;

/// What parses names a path that no NUL cuts short, and survives another round.
void checkParse(const std::string& text) {
    const auto url = FileURL::parse(text);
    if (!url) {
        return;
    }
    require(url->path().starts_with('/') && url->path().find('\0') == std::string::npos);
    require(FileURL::parse(url->absoluteString()) == url);
}

void checkRoundTrip(std::string path) {
    std::replace(path.begin(), path.end(), '\0', '0');
    path.insert(0, 1, '/');
    const FileURL url = FileURL::fromPath(path);
    require(FileURL::parse(url.absoluteString()) == url);
    const bool printable =
        std::ranges::all_of(url.absoluteString(), [](char c) { return c > ' ' && c < '\x7f'; });
    require(printable);
    require(!url.lastPathComponent().empty());
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const std::string text = fuzzing::textOf(data, size);
    checkParse(text);
    checkParse("file://" + text);
    checkRoundTrip(text);
    return 0;
}
