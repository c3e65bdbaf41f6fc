// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <functional>
#include <string>
#include <vector>

/// Searches of the local computer by what is known of its items.
namespace platform::MetadataQuery {

/// Receives the paths of what was found, in ascending order of bytes.
using Completion = std::function<void(std::vector<std::string> paths)>;

/// Finds the items that carry a tag of exactly this name on the file systems of this computer,
/// network and pseudo file systems left out: files, folders and hidden ones; links are not
/// followed, and what may not be read is passed over. Returns at once; `completion` is called once,
/// on the main queue. Any thread.
void findItemsWithTag(const std::string& tag, Completion completion);

} // namespace platform::MetadataQuery
