// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "foundation/QMError.h"
#include "platform/Export.h"
#include "platform/PropertyList.h"

#include <functional>
#include <string>
#include <string_view>
#include <vector>

/// The name by which applications announce to each other that tags have changed. Nothing in this
/// library posts it.
inline constexpr std::string_view QMTagsDidChangeNotification = "QMTagsDidChangeNotification";

/// The tags of files. A name equals another when its bytes do. Keeps no state; any thread.
class QM_EXPORT QMTagService {
public:
    using Tags = std::vector<std::string>; ///< names, UTF-8 as a rule

    /// The tags of the item at `path` in their order; empty when it has none, when they cannot be
    /// read, and when nothing is there.
    [[nodiscard]] static Tags tagsForPath(const std::string& path);

    /// Gives the item exactly these tags; none removes them all. False, and the reason in `error`
    /// unless that is null, when it failed; the tags are then what they were.
    static bool setTags(const Tags& tags, const std::string& path, QMError* error = nullptr);

    /// Puts `tag` behind the others unless it is there already. Answers whether it is there now;
    /// `error` as above.
    static bool addTag(const std::string& tag, const std::string& path, QMError* error = nullptr);

    /// Removes every occurrence of `tag`. Answers whether it is gone now; `error` as above.
    static bool removeTag(const std::string& tag, const std::string& path,
                          QMError* error = nullptr);

    /// The tags that the user has defined, exactly as the file manager of a Mac keeps them in its
    /// synced preferences: as a rule dictionaries with a name "n" and a colour number "l", but
    /// nothing is checked. The seven built-in ones when there is no such list.
    [[nodiscard]] static platform::PropertyList::Array allAvailableTags();

    /// Called with the absolute paths, bytes, of what was found.
    using Completion = std::function<void(Tags paths)>;
    /// Finds the items of the local computer that carry `tag`. `completion` gets their paths, in
    /// ascending order of bytes, once, on the main queue; at once, on the calling thread, and with
    /// none for an empty tag. An empty `completion` starts nothing.
    static void findFilesWithTag(const std::string& tag, Completion completion);
};
