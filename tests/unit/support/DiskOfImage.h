// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "platform/linux/hdiutil/UdifSource.h"
#include "tests/unit/support/MemorySource.h"

#include <memory>
#include <stdexcept>
#include <string>
#include <utility>

/// An image in memory: its file, what was read of it, and its disk.
struct DiskOfImage {
    explicit DiskOfImage(std::string bytes)
        : file(std::make_shared<MemorySource>(std::move(bytes))) {
        auto result = platform::hdiutil::readUdif(*file);
        if (const auto* error = std::get_if<platform::hdiutil::UdifError>(&result)) {
            throw std::runtime_error("no image: " + error->reason);
        }
        image = std::get<platform::hdiutil::UdifImage>(std::move(result));
        disk = std::make_shared<platform::hdiutil::UdifSource>(file, image);
    }

    /// The bytes as text, or "-" when they cannot be had.
    [[nodiscard]] std::string bytesAt(std::uint64_t offset, std::size_t length) const {
        std::string bytes(length, '?');
        return disk->read(offset, std::as_writable_bytes(std::span(bytes))) ? bytes : "-";
    }
    [[nodiscard]] std::string bytes() const {
        return bytesAt(0, static_cast<std::size_t>(disk->size()));
    }

    std::shared_ptr<const MemorySource> file;
    platform::hdiutil::UdifImage image;
    std::shared_ptr<const platform::hdiutil::UdifSource> disk;
};
