// SPDX-License-Identifier: Apache-2.0
#include "platform/MetadataQuery.h"

#include "platform/DispatchQueue.h"
#include "platform/linux/TagSearch.h"

#include <memory>
#include <utility>

namespace platform::MetadataQuery {

void findItemsWithTag(const std::string& tag, Completion completion) {
    const auto paths = std::make_shared<std::vector<std::string>>();
    DispatchQueue::asyncWithReply(
        DispatchQueue::QualityOfService::userInitiated,
        [tag, paths] { *paths = itemsWithTag(localComputerScope(), tag); },
        [paths, completion = std::move(completion)] { completion(std::move(*paths)); });
}

} // namespace platform::MetadataQuery
