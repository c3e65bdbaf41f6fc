// SPDX-License-Identifier: Apache-2.0
// A file of its own, so that a program without a main loop does not link one.
#include "platform/DispatchQueue.h"
#include "services/QMChecksumService.h"

#include <memory>
#include <utility>

namespace DispatchQueue = platform::DispatchQueue;

void QMChecksumService::checksumForFileAtPath(const std::string& path,
                                              QMChecksumAlgorithm algorithm,
                                              Completion completion) {
    const auto result = std::make_shared<std::optional<std::string>>();
    DispatchQueue::asyncWithReply(
        DispatchQueue::QualityOfService::userInitiated,
        [path, algorithm, result] { *result = checksumForFileAtPath(path, algorithm); },
        [result, completion = std::move(completion)] {
            if (completion) {
                completion(std::move(*result));
            }
        });
}
