// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "tests/unit/support/TemporaryFolder.h"

#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>

/// A shell script in the disk-image tool's place, which keeps its arguments and then does what it
/// is told, and the path of an image to give it.
class DiskImageStandIn {
public:
    DiskImageStandIn() { says("exit 0"); }

    /// What the tool does from now on.
    void says(const std::string& script) const {
        const std::string tool =
            folder.file("tool", "#!/bin/sh\nprintf '%s\\n' \"$@\" >'" + folder.path("arguments") +
                                    "'\n" + script + "\n");
        std::filesystem::permissions(tool, std::filesystem::perms::owner_all);
    }
    [[nodiscard]] std::string path() const { return folder.path("tool"); }
    [[nodiscard]] const std::string& image() const { return imagePath; }
    [[nodiscard]] std::string folderPath() const { return folder.path(); }

    /// The arguments of the last run, a line each.
    [[nodiscard]] std::string arguments() const {
        std::ifstream file(folder.path("arguments"), std::ios::binary);
        return {std::istreambuf_iterator<char>(file), {}};
    }
    [[nodiscard]] bool wasRun() const { return std::filesystem::exists(folder.path("arguments")); }

private:
    TemporaryFolder folder;
    std::string imagePath = folder.file("an image's \"name\" $x.dmg");
};
