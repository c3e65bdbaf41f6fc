// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "platform/Data.h"
#include "platform/Export.h"

#include <string>

/// Helpers on bytes: digests and their text form. Any thread.

/// HMAC with SHA-256 (RFC 2104, FIPS 180-4) of `message` under `key`: 32 bytes.
QM_EXPORT [[nodiscard]] platform::Data qm_hmacSHA256WithKey(platform::DataView message,
                                                            platform::DataView key);

/// SHA-256 (FIPS 180-4) of `bytes`: 32 bytes.
QM_EXPORT [[nodiscard]] platform::Data qm_sha256(platform::DataView bytes);

/// Two lower-case hexadecimal digits per byte, in order; empty for no bytes.
QM_EXPORT [[nodiscard]] std::string qm_hexString(platform::DataView bytes);
