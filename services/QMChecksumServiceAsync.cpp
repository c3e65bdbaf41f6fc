// SPDX-License-Identifier: Apache-2.0
// A file of its own, so that a program without a main loop does not link one.
#include "platform/DispatchQueue.h"
#include "services/QMChecksumService.h"

#include <utility>

namespace DispatchQueue = platform::DispatchQueue;

void QMChecksumService::checksumForFileAtPath(const std::string& path,
                                              QMChecksumAlgorithm algorithm,
                                              Completion completion) {
    DispatchQueue::async(DispatchQueue::QualityOfService::userInitiated,
                         [path, algorithm, completion = std::move(completion)]() mutable {
                             auto result = checksumForFileAtPath(path, algorithm);
                             DispatchQueue::asyncMain(
                                 [result = std::move(result), completion = std::move(completion)] {
                                     if (completion) {
                                         completion(result);
                                     }
                                 });
                         });
}
