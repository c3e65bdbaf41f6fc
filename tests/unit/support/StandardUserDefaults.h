// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "platform/PropertyList.h"
#include "platform/UserDefaults.h"
#include "tests/unit/support/TemporaryFolder.h"

#include <filesystem>
#include <string>
#include <string_view>

/// Stands in for the user's settings while it lives: a file of its own, and no defaults.
class StandardUserDefaults {
public:
    StandardUserDefaults() { platform::UserDefaults::setStandard(&m_defaults); }
    StandardUserDefaults(const StandardUserDefaults&) = delete;
    StandardUserDefaults& operator=(const StandardUserDefaults&) = delete;
    StandardUserDefaults(StandardUserDefaults&&) = delete;
    StandardUserDefaults& operator=(StandardUserDefaults&&) = delete;
    ~StandardUserDefaults() { platform::UserDefaults::setStandard(nullptr); }

    /// Saves what the user has set as another process would: by replacing the file.
    void save(const platform::PropertyList& values) const {
        const auto bytes = values.serialized(platform::PropertyList::Format::binary);
        saveBytes({reinterpret_cast<const char*>(bytes.data()), bytes.size()});
    }
    void saveBytes(std::string_view bytes) const {
        std::filesystem::rename(m_folder.file("new", bytes), path());
    }

    [[nodiscard]] std::string path() const { return m_folder.path("settings.plist"); }

private:
    TemporaryFolder m_folder;
    platform::UserDefaults m_defaults{path()};
};
