// SPDX-License-Identifier: Apache-2.0
// A program of somebody else's: it sees only what is installed. Prints the digest of a file, its
// tags after one was added, and what is in it.
#include "foundation/QMPreferencesKeys.h"
#include "foundation/QMString.h"
#include "model/QMFileItem.h"
#include "platform/DispatchQueue.h"
#include "services/QMChecksumService.h"
#include "services/QMMetadataService.h"
#include "services/QMTagService.h"

#include <cstdio>
#include <memory>
#include <string>

namespace {

void printChecksumAndTags(const std::string& path) {
    const auto digest = QMChecksumService::checksumForFileAtPath(path, QMChecksumAlgorithmSHA256);
    std::printf("%s\n", digest.value_or("no digest").c_str());
    QMError error;
    if (!QMTagService::addTag("Best", path, &error)) {
        std::printf("%s\n", error.localizedDescription.c_str());
    }
    std::printf("tags: %s\n", qm_joined(QMTagService::tagsForPath(path), ", ").c_str());
}

void printMetadata(const std::string& path) {
    bool isDone = false;
    QMMetadataService::sharedService()->extractMetadataForFileItem(
        QMFileItem::initWithURL(platform::FileURL::fromPath(path)),
        [&isDone](const std::shared_ptr<QMMetadataResult>& result) {
            for (const auto& entry : *result->entries) {
                std::printf("%s=%s\n", entry->key.value_or("").c_str(),
                            entry->value.value_or("").c_str());
            }
            isDone = true;
        });
    platform::DispatchQueue::runMainQueueUntil([&isDone] { return isDone; });
}

} // namespace

int main(int argc, char* argv[]) {
    if (argc != 2) {
        return 2;
    }
    QMPreferencesKeys::registerDefaults();
    printChecksumAndTags(argv[1]);
    printMetadata(argv[1]);
    return 0;
}
