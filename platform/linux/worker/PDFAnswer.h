// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "platform/Data.h"
#include "platform/PDFDocument.h"

#include <optional>

/// Properties of PDFs on their way from the process that reads them: CBOR, an object with a member
/// for each property that is there, named as in the struct; the version is a list of two numbers.
/// Any thread.
namespace platform::worker {

/// The bytes of `properties`. What `decodedPDFProperties` refuses is left out, or 0 where it has to
/// be there: texts that are not UTF-8 or have a NUL, negative versions, counts above 2^31-1.
[[nodiscard]] Data encodedPDFProperties(const PDFDocumentProperties& properties);

/// Reads them back. The bytes are not trusted: nullopt for an unknown, repeated or missing member,
/// for a value of another type, and for one that `encodedPDFProperties` leaves out.
[[nodiscard]] std::optional<PDFDocumentProperties> decodedPDFProperties(DataView bytes);

} // namespace platform::worker
