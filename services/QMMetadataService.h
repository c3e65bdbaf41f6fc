// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "model/QMMetadataCategory.h"
#include "model/QMMetadataEntry.h"
#include "platform/PropertyList.h"

#include <functional>
#include <memory>
#include <optional>
#include <span>
#include <string>
#include <string_view>

/// Tells what is in a file: which category it belongs to, which lines the user wants to see of it,
/// and the lines. Labels, names and values are UTF-8, in the user's language where the application
/// has a catalogue. Services live in shared pointers and never change; any thread, several files at
/// once.
class QMMetadataService : public std::enable_shared_from_this<QMMetadataService> {
public:
    /// Keys as preferences hold them: nothing is checked, so others than texts may be among them.
    using Keys = platform::PropertyList::Array;

    /// What a service works with. Others than the defaults are for tests.
    struct Settings {
        /// Answers with the array that the user's preferences hold under `key`; nullopt when there
        /// is none. Called on the thread that asks the service.
        std::function<std::optional<Keys>(const std::string& key)> arrayForKey;
    };

    /// The one service of the process, made when it is first asked for. It works with the user's
    /// preferences.
    [[nodiscard]] static const std::shared_ptr<QMMetadataService>& sharedService();

    /// A service of its own.
    [[nodiscard]] static std::shared_ptr<QMMetadataService> init(Settings settings);

    /// The category of files with this extension, in any case and without its dot;
    /// `QMMetadataCategoryNone` for an unknown one.
    [[nodiscard]] static QMMetadataCategory categoryForExtension(std::string_view extension);

    /// The category's name for people; empty for "none" and for numbers that are no category.
    [[nodiscard]] static std::string nameForCategory(QMMetadataCategory category);

    /// The keys that the category's files may have entries for, in the order in which settings
    /// offer them. Constants.
    [[nodiscard]] static std::span<const std::string_view>
    availableKeysForCategory(QMMetadataCategory category);

    /// The keys that the user wants to see: what the preference "QMMetadataEnabled_" with the
    /// category's number holds, unchanged, even if that is nothing; all of them when there is no
    /// such array.
    [[nodiscard]] Keys enabledKeysForCategory(QMMetadataCategory category) const;

    /// Whether `key` is among `keys`, as a text.
    [[nodiscard]] static bool containsKey(const Keys& keys, std::string_view key);

    /// The label of a key, for settings; the key itself when it is of no category.
    [[nodiscard]] static std::string localizedNameForKey(std::string_view key);

    /// The language of files with this extension, which has to be in lower case; nullopt for an
    /// unknown one. Constants.
    [[nodiscard]] static std::optional<std::string_view>
    programmingLanguageForExtension(std::string_view extension);

    // The extractors, one for each category that has one. Each reads the file at `path`, appends to
    // `into` what it finds of `enabledKeys`, in the order of display, and appends nothing when the
    // file cannot be opened. They may take long: they belong on a background queue.

    /// Encoding, counts, line ends, language and interpreter of a text file, from its first 64 KiB.
    /// Nothing but regular files is read, so FIFOs and devices never block; a file whose reading
    /// fails counts as one that cannot be opened.
    static void extractTextMetadata(const std::string& path, const Keys& enabledKeys,
                                    QMMetadataEntries& into);

private:
    explicit QMMetadataService(Settings settings);

    const Settings m_settings;
};
