// SPDX-License-Identifier: Apache-2.0
// Takes the bytes behind the first, which says of what kind they are, for what a process for media
// answers, and makes the entries that users see.
#include "fuzz/Fuzzing.h"
#include "platform/linux/Utf8.h"
#include "platform/linux/worker/AssetAnswer.h"
#include "platform/linux/worker/ImageAnswer.h"
#include "platform/linux/worker/PDFAnswer.h"
#include "services/QMMetadataService.h"

#include <algorithm>

namespace {

using fuzzing::require;
using platform::DataView;

using Extractor = void (QMMetadataService::*)(const std::string&, const QMMetadataService::Keys&,
                                              QMMetadataEntries&) const;

QMMetadataEntries entriesOf(QMMetadataService::Settings settings, QMMetadataCategory category,
                            Extractor extract) {
    const auto service = QMMetadataService::init(std::move(settings));
    QMMetadataEntries entries;
    (*service.*extract)("/x", *QMMetadataService::enabledKeysForCategory(category), entries);
    return entries;
}

QMMetadataEntries entriesOf(char kind, DataView value) {
    QMMetadataService::Settings settings;
    settings.assetReader = [value](const std::string&, bool) {
        return platform::worker::decodedMediaAsset(value);
    };
    settings.imageReader = [value](const std::string&, bool) {
        return platform::worker::decodedImageProperties(value);
    };
    settings.pdfReader = [value](const std::string&, bool) {
        return platform::worker::decodedPDFProperties(value);
    };
    switch (kind) {
    case 'v':
        return entriesOf(std::move(settings), QMMetadataCategoryVideo,
                         &QMMetadataService::extractVideoMetadata);
    case 'a':
        return entriesOf(std::move(settings), QMMetadataCategoryAudio,
                         &QMMetadataService::extractAudioMetadata);
    case 'p':
        return entriesOf(std::move(settings), QMMetadataCategoryPDF,
                         &QMMetadataService::extractPDFMetadata);
    default:
        return entriesOf(std::move(settings), QMMetadataCategoryImageRaster,
                         &QMMetadataService::extractImageMetadata);
    }
}

bool isDigit(char c) {
    return c >= '0' && c <= '9';
}

/// "1:02", "10:00:59": digits, and two of them behind each colon.
void checkDuration(const std::string& value) {
    const auto parts = fuzzing::split(value, ':');
    require(parts.size() == 2 || parts.size() == 3);
    for (std::size_t i = 0; i < parts.size(); ++i) {
        require(!parts[i].empty() && std::ranges::all_of(parts[i], isDigit));
        require(i == 0 || (parts[i].size() == 2 && parts[i] < "60"));
    }
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    if (size == 0) {
        return 0;
    }
    const char kind = static_cast<char>(data[0]);
    const auto entries = entriesOf(kind, fuzzing::bytesOf(data + 1, size - 1));
    require(entries.size() <= platform::worker::maximumItems + 17);
    for (const auto& entry : entries) {
        require(entry->key && entry->localizedKey && entry->value);
        require(platform::isUTF8(*entry->value));
        if (entry->key == "duration") {
            checkDuration(*entry->value);
        }
    }
    return 0;
}
