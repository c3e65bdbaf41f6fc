// SPDX-License-Identifier: Apache-2.0
// Usage: unmount_volume PATH
// Unmounts a volume as an application would, and prints what the service announces and reports.
// Status 1 when it could not be unmounted, 10 without a path.
#include "platform/DispatchQueue.h"
#include "platform/NotificationCenter.h"
#include "services/QMDiskImageService.h"

#include <cstdio>
#include <optional>
#include <string>

namespace {

using platform::FileURL;
using platform::Notification;

void printAnnouncement(const Notification& notification) {
    std::printf("%s mountPath=%s\n", notification.name.c_str(),
                std::get<std::string>(notification.userInfo.at("mountPath")).c_str());
}

} // namespace

int main(int argc, char* argv[]) {
    if (argc != 2) {
        std::fputs("Usage: unmount_volume PATH\n", stderr);
        return 10;
    }
    const auto token = platform::NotificationCenter::defaultCenter().addObserver(
        QMDiskImageDidUnmountNotification, nullptr, printAnnouncement);
    std::optional<int> status;
    QMDiskImageService::sharedService()->unmountVolume(
        FileURL::fromDirectoryPath(argv[1]), [&status](const std::optional<QMError>& error) {
            if (error) {
                std::fprintf(stderr, "%s %lld: %s\n", error->domain.c_str(),
                             static_cast<long long>(error->code),
                             error->localizedDescription.c_str());
            }
            status = error ? 1 : 0;
        });
    platform::DispatchQueue::runMainQueueUntil([&status] { return status.has_value(); });
    platform::NotificationCenter::defaultCenter().removeObserver(token);
    return *status;
}
