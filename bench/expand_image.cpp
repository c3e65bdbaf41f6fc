// SPDX-License-Identifier: Apache-2.0
// Usage: expand_image IMAGE DISK
// Expands a UDIF image into a file, as attaching it does.
#include "platform/linux/hdiutil/ByteSource.h"
#include "platform/linux/hdiutil/Udif.h"
#include "platform/linux/hdiutil/UdifExpander.h"

#include <cstdio>
#include <thread>
#include <variant>

#include <fcntl.h>
#include <unistd.h>

namespace hdiutil = platform::hdiutil;

int main(int argc, char* argv[]) {
    const auto file = argc == 3 ? hdiutil::FileSource::open(argv[1]) : nullptr;
    if (!file) {
        std::fputs("Usage: expand_image IMAGE DISK\n", stderr);
        return 10;
    }
    const auto read = hdiutil::readUdif(*file);
    const auto* image = std::get_if<hdiutil::UdifImage>(&read);
    const int disk = ::open(argv[2], O_RDWR | O_CREAT | O_TRUNC | O_CLOEXEC, 0600);
    if (image == nullptr || disk < 0) {
        return 1;
    }
    const auto failure =
        hdiutil::expandUdif(*file, *image, disk, std::thread::hardware_concurrency());
    ::close(disk);
    return failure ? 1 : 0;
}
