// SPDX-License-Identifier: Apache-2.0
// A file of its own, so that a program without a main loop does not link one.
#include "platform/MetadataQuery.h"
#include "services/QMTagService.h"

#include <utility>

void QMTagService::findFilesWithTag(const std::string& tag, Completion completion) {
    if (!completion) {
        return;
    }
    if (tag.empty()) {
        completion({});
        return;
    }
    platform::MetadataQuery::findItemsWithTag(tag, std::move(completion));
}
