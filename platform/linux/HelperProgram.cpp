// SPDX-License-Identifier: Apache-2.0
#include "platform/linux/HelperProgram.h"

#include "platform/FileManager.h"

namespace platform {

std::string helperProgram(const std::string& name) {
    // In a build tree the helper lies beside the programs.
    if (const auto program = FileManager::resolvingSymlinks("/proc/self/exe")) {
        std::string beside = program->substr(0, program->rfind('/') + 1) + name;
        if (FileManager::fileExistsAtPath(beside)) {
            return beside;
        }
    }
    return std::string(QM_HELPER_FOLDER) + "/" + name;
}

} // namespace platform
