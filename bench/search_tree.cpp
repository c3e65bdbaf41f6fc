// SPDX-License-Identifier: Apache-2.0
// Usage: search_tree FOLDER TAG
// The search for tags, held to one folder so that it can be compared with other programs.
#include "platform/linux/TagSearch.h"

#include <cstdio>

int main(int argc, char* argv[]) {
    if (argc != 3) {
        return 10;
    }
    for (const std::string& path : platform::itemsWithTag({{argv[1]}, {}}, argv[2])) {
        std::puts(path.c_str());
    }
    return 0;
}
