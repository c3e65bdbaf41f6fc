// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <cstdint>

/// What kind of file metadata is told of. The numbers are part of the interface: preferences are
/// kept under them. Any other number stands for no category.
enum QMMetadataCategory : std::int64_t {
    QMMetadataCategoryNone = 0,
    QMMetadataCategoryImageRaster = 1,
    QMMetadataCategoryImageVector = 2,
    QMMetadataCategoryVideo = 3,
    QMMetadataCategoryAudio = 4,
    QMMetadataCategoryText = 5,
    QMMetadataCategoryPDF = 6,
    QMMetadataCategoryOffice = 7,
    QMMetadataCategoryArchive = 8,
    QMMetadataCategoryExecutable = 9,
    QMMetadataCategoryCertificate = 10,
    QMMetadataCategoryFont = 11,
    QMMetadataCategoryDatabase = 12,
    QMMetadataCategoryDiskImage = 13,
    QMMetadataCategoryConfig = 14,
    QMMetadataCategory3DModel = 15,
    QMMetadataCategoryEbook = 16,
    QMMetadataCategoryContact = 17,
};
