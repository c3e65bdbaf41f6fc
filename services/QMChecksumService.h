// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "platform/Data.h"
#include "platform/Export.h"
#include "platform/FileHandle.h"

#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <string_view>

/// The message digests that files can be checked by. The numbers are part of the interface; any
/// other number is invalid.
enum QMChecksumAlgorithm : std::int64_t {
    QMChecksumAlgorithmSHA256 = 0,
    QMChecksumAlgorithmSHA1 = 1,
    QMChecksumAlgorithmSHA512 = 2,
    QMChecksumAlgorithmMD5 = 3,
};

/// Digests of files (RFC 1321, FIPS 180-4) as lower-case hexadecimal text. Keeps no state; any
/// thread. Files of any size are read in pieces of 64 KiB.
class QM_EXPORT QMChecksumService {
public:
    /// "SHA-256", "SHA-1", "SHA-512" or "MD5"; "SHA-256" for an invalid algorithm.
    [[nodiscard]] static std::string_view displayNameForAlgorithm(QMChecksumAlgorithm algorithm);

    /// The digest of the contents of the file at `path`. nullopt when the file cannot be opened
    /// for reading, for a folder, and for an invalid algorithm, which is told only after the file
    /// was read through. When reading fails half-way, the digest of the bytes before: the failure
    /// is in the system log.
    [[nodiscard]] static std::optional<std::string>
    checksumForFileAtPath(const std::string& path, QMChecksumAlgorithm algorithm);

    /// The same for what is left of an open file; the caller closes it.
    [[nodiscard]] static std::optional<std::string>
    checksumForFileHandle(platform::FileHandle& file, QMChecksumAlgorithm algorithm);

    /// Called with the checksum as lower-case hexadecimal digits, or nullopt when it failed.
    using Completion = std::function<void(std::optional<std::string>)>;
    /// The same on a global queue; returns at once. `completion`, unless empty, gets the result
    /// exactly once on the main queue, which somebody must service. Requests run in parallel.
    static void checksumForFileAtPath(const std::string& path, QMChecksumAlgorithm algorithm,
                                      Completion completion);

    /// Two lower-case hexadecimal digits for each of the `length` bytes at `bytes`, which may be
    /// null when `length` is 0.
    [[nodiscard]] static std::string hexString(const std::byte* bytes, std::size_t length);
};
