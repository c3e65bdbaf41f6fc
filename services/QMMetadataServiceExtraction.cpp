// SPDX-License-Identifier: Apache-2.0
#include "foundation/QMPreferencesKeys.h"
#include "foundation/QMString.h"
#include "platform/DispatchQueue.h"
#include "platform/UserDefaults.h"
#include "services/QMMetadataService.h"

#include <algorithm>
#include <array>
#include <utility>

namespace DispatchQueue = platform::DispatchQueue;

namespace {

struct Extractor {
    QMMetadataCategory category;
    decltype(&QMMetadataService::extractTextMetadata) extract;
};

constexpr std::array<Extractor, 6> extractors{{
    {QMMetadataCategoryImageRaster, &QMMetadataService::extractImageMetadata},
    {QMMetadataCategoryVideo, &QMMetadataService::extractVideoMetadata},
    {QMMetadataCategoryAudio, &QMMetadataService::extractAudioMetadata},
    {QMMetadataCategoryText, &QMMetadataService::extractTextMetadata},
    {QMMetadataCategoryPDF, &QMMetadataService::extractPDFMetadata},
    {QMMetadataCategoryDiskImage, &QMMetadataService::extractDiskImageMetadata},
}};

// What is to be read of an item.
struct Job {
    std::string path;
    QMMetadataCategory category;
};

// nullopt when nothing is.
std::optional<Job> jobFor(const QMFileItem* item) {
    if (item == nullptr || item->isDirectory() ||
        !platform::UserDefaults::standard().boolForKey(QMMetadataEnabledKey)) {
        return std::nullopt;
    }
    std::string path = item->path().value_or(std::string());
    const auto category = QMMetadataService::categoryForExtension(qm_pathExtensionLowercased(path));
    return category == QMMetadataCategoryNone ? std::nullopt
                                              : std::optional(Job{std::move(path), category});
}

} // namespace

void QMMetadataService::extractMetadataForFileItem(
    const std::shared_ptr<const QMFileItem>& fileItem, Completion completion) const {
    if (!completion) {
        return;
    }
    auto job = jobFor(fileItem.get());
    if (!job) {
        completion(nullptr);
        return;
    }
    auto result = std::make_shared<QMMetadataResult>();
    result->category = job->category;
    result->categoryName = nameForCategory(job->category);
    result->entries = std::make_shared<QMMetadataEntries>();
    DispatchQueue::asyncWithReply(
        DispatchQueue::QualityOfService::userInitiated,
        [self = shared_from_this(), job = *std::move(job), result] {
            result->entries = self->entriesForPath(job.path, job.category);
        },
        [result, completion = std::move(completion)] { completion(result); });
}

std::shared_ptr<QMMetadataEntries>
QMMetadataService::entriesForPath(const std::string& path, QMMetadataCategory category) const {
    auto entries = std::make_shared<QMMetadataEntries>();
    const auto enabledKeys = enabledKeysForCategory(category);
    const auto* const extractor = std::ranges::find(extractors, category, &Extractor::category);
    if (extractor != extractors.end()) {
        (this->*extractor->extract)(path, *enabledKeys, *entries);
    }
    return entries;
}
