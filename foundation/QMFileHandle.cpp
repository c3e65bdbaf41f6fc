// SPDX-License-Identifier: Apache-2.0
#include "foundation/QMFileHandle.h"

#include "platform/Format.h"
#include "platform/SystemLog.h"

#include <algorithm>
#include <exception>
#include <variant>

using platform::Data;
using platform::FileHandle;

namespace {

constexpr std::size_t pieceSize = std::size_t{64} * 1024;

// Appends up to `length` bytes of the file; answers how many, or nullopt when the read failed.
std::optional<std::size_t> appendPiece(FileHandle& file, Data& data, std::size_t length) {
    const std::size_t start = data.size();
    data.resize(start + length);
    const auto count = qm_readDataUpToLength(file, std::span(data).subspan(start));
    data.resize(start + count.value_or(0));
    return count;
}

std::optional<Data> dataUpToLength(FileHandle& file, std::size_t length) {
    Data data;
    while (data.size() < length) {
        const std::size_t wanted = std::min(length - data.size(), pieceSize);
        const auto count = appendPiece(file, data, wanted);
        if (!count && data.empty()) {
            return std::nullopt;
        }
        if (count.value_or(0) < wanted) {
            break;
        }
    }
    return data;
}

std::optional<Data> dataToEndOfFile(FileHandle& file) {
    Data data;
    while (true) {
        const auto count = appendPiece(file, data, pieceSize);
        if (!count) {
            return std::nullopt;
        }
        if (*count == 0) {
            return data;
        }
    }
}

// What `read` answers; nothing when it throws, as it does when there is more to read than memory.
template <class Read>
std::optional<Data> withoutExceptions(const Read& read) {
    try {
        return read();
    } catch (const std::exception& exception) {
        platform::SystemLog::error(
            platform::format("[NSFileHandle+Quillmere] read exception: {}", exception.what()));
        return std::nullopt;
    }
}

} // namespace

std::optional<std::size_t> qm_readDataUpToLength(FileHandle& file, std::span<std::byte> buffer) {
    const FileHandle::ReadResult result = file.read(buffer);
    if (const auto* error = std::get_if<FileHandle::ReadError>(&result)) {
        platform::SystemLog::error(
            platform::format("[NSFileHandle+Quillmere] read error: {}", error->reason));
        return std::nullopt;
    }
    return std::get<std::size_t>(result);
}

std::optional<Data> qm_readDataUpToLength(FileHandle& file, std::size_t length) {
    return withoutExceptions([&file, length] { return dataUpToLength(file, length); });
}

std::optional<Data> qm_readDataToEndOfFile(FileHandle& file) {
    return withoutExceptions([&file] { return dataToEndOfFile(file); });
}
