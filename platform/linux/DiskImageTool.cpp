// SPDX-License-Identifier: Apache-2.0
#include "platform/DiskImageTool.h"

#include "platform/FileManager.h"
#include "platform/linux/HelperProgram.h"

namespace platform {

std::string diskImageToolPath() {
    std::string systemTool = "/usr/bin/hdiutil";
    if (FileManager::fileExistsAtPath(systemTool)) {
        return systemTool;
    }
    return helperProgram("quillmere-hdiutil");
}

} // namespace platform
