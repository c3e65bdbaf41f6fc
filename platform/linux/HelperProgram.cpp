// SPDX-License-Identifier: Apache-2.0
#include "platform/linux/HelperProgram.h"

#include "platform/FileManager.h"
#include "platform/FileStatus.h"

#include <optional>
#include <string_view>
#include <utility>

#include <dlfcn.h>
#include <link.h>

namespace platform {
namespace {

// From the folders that programs and libraries are installed in.
constexpr std::string_view fromPrograms = QM_HELPERS_FROM_PROGRAMS;
constexpr std::string_view fromLibraries = QM_HELPERS_FROM_LIBRARIES;

// What this code was loaded from: a shared library or, where it is linked statically, the program
// itself, for which the loader knows no name.
struct Module {
    std::string path;
    bool isProgram = true;
};

std::optional<Module> ownModule() {
    static const char addressOfOurs = 0;
    Dl_info information{};
    void* map = nullptr;
    const bool isKnown = ::dladdr1(&addressOfOurs, &information, &map, RTLD_DL_LINKMAP) != 0;
    const char* name = isKnown && map != nullptr ? static_cast<link_map*>(map)->l_name : nullptr;
    const bool isProgram = name == nullptr || *name == '\0';
    auto path = FileManager::resolvingSymlinks(isProgram ? "/proc/self/exe" : name);
    return path ? std::optional(Module{std::move(*path), isProgram}) : std::nullopt;
}

// A program that lies where anybody may put one, as in /tmp, must not take the helper's place.
bool isOwnedLike(const std::string& path, const std::string& module) {
    const auto helper = statusOfItem(path, true);
    const auto own = statusOfItem(module, true);
    return helper && own && (helper->ownerID == 0 || helper->ownerID == own->ownerID);
}

std::optional<std::string> helperNear(const std::string& module, const std::string& way) {
    auto path = FileManager::resolvingSymlinks(module.substr(0, module.rfind('/') + 1) + way);
    return path && isOwnedLike(*path, module) ? path : std::nullopt;
}

} // namespace

std::string helperProgram(const std::string& name) {
    // In a build tree the helper lies beside the programs.
    if (const auto program = FileManager::resolvingSymlinks("/proc/self/exe")) {
        if (auto beside = helperNear(*program, name)) {
            return std::move(*beside);
        }
    }
    // What was installed may have been moved as a whole.
    if (const auto module = ownModule()) {
        const std::string_view way = module->isProgram ? fromPrograms : fromLibraries;
        if (auto moved = helperNear(module->path, std::string(way).append("/").append(name))) {
            return std::move(*moved);
        }
    }
    return std::string(QM_HELPER_FOLDER) + "/" + name;
}

} // namespace platform
