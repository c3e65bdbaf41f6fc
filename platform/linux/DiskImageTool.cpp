// SPDX-License-Identifier: Apache-2.0
#include "platform/DiskImageTool.h"

#include "platform/FileManager.h"

namespace platform {
namespace {

const char* const toolName = "quillmere-hdiutil";

} // namespace

std::string diskImageToolPath() {
    std::string systemTool = "/usr/bin/hdiutil";
    if (FileManager::fileExistsAtPath(systemTool)) {
        return systemTool;
    }
    // In a build tree the helper lies beside the programs.
    if (const auto program = FileManager::resolvingSymlinks("/proc/self/exe")) {
        std::string beside = program->substr(0, program->rfind('/') + 1) + toolName;
        if (FileManager::fileExistsAtPath(beside)) {
            return beside;
        }
    }
    return std::string(QM_HELPER_FOLDER) + "/" + toolName;
}

} // namespace platform
