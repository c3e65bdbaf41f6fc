// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "platform/PDFDocument.h"
#include "platform/linux/worker/MediaWorker.h"

#include <optional>
#include <string>

namespace platform::worker {

/// `pdfDocumentPropertiesOfFile` by the processes of `worker`. The file is opened here, as they can
/// open none. A document whose first page is the end of the process that looks for text there is
/// asked for once more, without text. Any thread.
[[nodiscard]] std::optional<PDFDocumentProperties>
pdfDocumentProperties(MediaWorker& worker, const std::string& path, bool wantsText);

} // namespace platform::worker
