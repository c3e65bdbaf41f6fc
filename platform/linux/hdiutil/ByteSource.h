// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "platform/linux/Descriptor.h"
#include "platform/linux/FileIdentity.h"

#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <span>
#include <string>
#include <utility>

namespace platform::hdiutil {

/// Whether `length` bytes from `offset` on lie within `size`.
[[nodiscard]] constexpr bool isInside(std::uint64_t offset, std::uint64_t length,
                                      std::uint64_t size) {
    return offset <= size && length <= size - offset;
}

/// The bytes of a file, or those of the disk that an image holds in whatever form. Any thread.
class ByteSource {
public:
    ByteSource() = default;
    ByteSource(const ByteSource&) = delete;
    ByteSource& operator=(const ByteSource&) = delete;
    ByteSource(ByteSource&&) = delete;
    ByteSource& operator=(ByteSource&&) = delete;
    virtual ~ByteSource() = default;

    /// How many bytes there are.
    [[nodiscard]] virtual std::uint64_t size() const = 0;

    /// Fills `buffer` with the bytes from `offset` on. False, with `buffer` in any state, when one
    /// of them lies beyond the end or cannot be read.
    [[nodiscard]] virtual bool read(std::uint64_t offset, std::span<std::byte> buffer) const = 0;

    /// Where the next byte is, from `offset` on, that may be anything but zero; `size()` when there
    /// is none. What lies before it need not be read.
    [[nodiscard]] virtual std::uint64_t nextData(std::uint64_t offset) const {
        return offset < size() ? offset : size();
    }
};

/// The bytes of a regular file or a block device.
class FileSource final : public ByteSource {
public:
    /// Opens the file at `path` for reading, without waiting for anybody. Null for anything but a
    /// regular file or a block device that may be read; `reason` gets the system's words then.
    [[nodiscard]] static std::shared_ptr<const FileSource> open(const std::string& path,
                                                                std::string* reason = nullptr);

    [[nodiscard]] std::uint64_t size() const override { return m_size; }
    [[nodiscard]] bool read(std::uint64_t offset, std::span<std::byte> buffer) const override;
    [[nodiscard]] std::uint64_t nextData(std::uint64_t offset) const override;

    /// The file as it was when it was opened; nullopt for a device.
    [[nodiscard]] const std::optional<FileIdentity>& state() const { return m_state; }
    /// Whether nobody seems to have written to it since. Renaming it or tagging it does not count.
    [[nodiscard]] bool isUnchanged() const;

private:
    FileSource(Descriptor file, std::uint64_t size, const std::optional<FileIdentity>& state)
        : m_file(std::move(file))
        , m_size(size)
        , m_state(state) {}

    Descriptor m_file;
    std::uint64_t m_size;
    std::optional<FileIdentity> m_state;
};

/// A stretch of another source.
class PartSource final : public ByteSource {
public:
    /// `length` bytes of `whole` from `offset` on; fewer where `whole` ends before.
    PartSource(std::shared_ptr<const ByteSource> whole, std::uint64_t offset, std::uint64_t length);

    [[nodiscard]] std::uint64_t size() const override { return m_length; }
    [[nodiscard]] bool read(std::uint64_t offset, std::span<std::byte> buffer) const override;

private:
    std::shared_ptr<const ByteSource> m_whole;
    std::uint64_t m_offset;
    std::uint64_t m_length;
};

} // namespace platform::hdiutil
