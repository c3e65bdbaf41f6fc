// SPDX-License-Identifier: Apache-2.0
#include "platform/MetadataQuery.h"

#include "platform/DispatchQueue.h"
#include "platform/linux/TagSearch.h"

#include <utility>

namespace platform::MetadataQuery {

void findItemsWithTag(const std::string& tag, Completion completion) {
    DispatchQueue::async(
        DispatchQueue::QualityOfService::userInitiated,
        [tag, completion = std::move(completion)]() mutable {
            auto paths = itemsWithTag(localComputerScope(), tag);
            DispatchQueue::asyncMain(
                [paths = std::move(paths), completion = std::move(completion)]() mutable {
                    completion(std::move(paths));
                });
        });
}

} // namespace platform::MetadataQuery
