// SPDX-License-Identifier: Apache-2.0
// Usage: mount_image IMAGE
// Mounts a disk image as an application would, and prints what the service announces and reports.
// Status 1 when it could not be mounted, 10 without an image.
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
    const auto& mountPoint = std::get<FileURL>(notification.userInfo.at("mountPoint"));
    const auto& source = std::get<std::string>(notification.userInfo.at("sourcePath"));
    std::printf("%s mountPoint=%s sourcePath=%s\n", notification.name.c_str(),
                mountPoint.absoluteString().c_str(), source.c_str());
}

} // namespace

int main(int argc, char* argv[]) {
    if (argc != 2) {
        std::fputs("Usage: mount_image IMAGE\n", stderr);
        return 10;
    }
    const auto token = platform::NotificationCenter::defaultCenter().addObserver(
        QMDiskImageDidMountNotification, nullptr, printAnnouncement);
    std::optional<int> status;
    QMDiskImageService::sharedService()->mountDiskImage(
        argv[1],
        [&status](const std::optional<FileURL>& mountPoint, const std::optional<QMError>& error) {
            if (error) {
                std::fprintf(stderr, "%s %lld: %s\n", error->domain.c_str(),
                             static_cast<long long>(error->code),
                             error->localizedDescription.c_str());
            } else {
                std::printf("%s\n", mountPoint->path().c_str());
            }
            status = error ? 1 : 0;
        });
    platform::DispatchQueue::runMainQueueUntil([&status] { return status.has_value(); });
    platform::NotificationCenter::defaultCenter().removeObserver(token);
    return *status;
}
