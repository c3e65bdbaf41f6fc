// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "platform/linux/Descriptor.h"
#include "platform/linux/pdf/PDFReader.h"

#include <filesystem>
#include <optional>
#include <set>
#include <string>

#include <fcntl.h>

/// The PDFs that tests/samples/make-pdf-samples makes.
namespace pdf_samples {

[[nodiscard]] inline std::set<std::string> names() {
    std::set<std::string> names;
    for (const auto& entry : std::filesystem::directory_iterator(QM_TEST_PDF_SAMPLES)) {
        names.insert(entry.path().filename());
    }
    return names;
}

[[nodiscard]] inline std::string pathOf(const std::string& name) {
    return std::string(QM_TEST_PDF_SAMPLES) + "/" + name;
}

[[nodiscard]] inline std::optional<platform::PDFDocumentProperties> read(const std::string& name,
                                                                         bool wantsText = true) {
    [[maybe_unused]] static const bool isPrepared = (platform::pdf::preparePDFReader(), true);
    const platform::Descriptor file(::open(pathOf(name).c_str(), O_RDONLY | O_CLOEXEC));
    return platform::pdf::readPDF(file.number(), wantsText);
}

} // namespace pdf_samples
