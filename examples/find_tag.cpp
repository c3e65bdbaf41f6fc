// SPDX-License-Identifier: Apache-2.0
// Usage: find_tag TAG
// Prints the paths of all items of this computer that carry the tag, one a line.
#include "platform/DispatchQueue.h"
#include "services/QMTagService.h"

#include <cstdio>

int main(int argc, char* argv[]) {
    if (argc != 2) {
        std::fputs("Usage: find_tag TAG\n", stderr);
        return 10;
    }
    bool done = false;
    QMTagService::findFilesWithTag(argv[1], [&done](const QMTagService::Tags& paths) {
        for (const std::string& path : paths) {
            std::puts(path.c_str());
        }
        done = true;
    });
    platform::DispatchQueue::runMainQueueUntil([&done] { return done; });
    return 0;
}
