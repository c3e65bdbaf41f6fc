// SPDX-License-Identifier: Apache-2.0
#include "cli/commands/QMCLIChecksumCommand.h"

#include "cli/Console.h"
#include "platform/FileManager.h"
#include "platform/PathString.h"
#include "services/QMChecksumService.h"

namespace {

constexpr std::int32_t unreadableStatus = 1;
constexpr std::int32_t notFoundStatus = 4;
constexpr std::int32_t usageStatus = 10;

QMChecksumAlgorithm chosenAlgorithm(const QMCLIOptions& options) {
    if (qm_isFlagSet(options, "md5")) {
        return QMChecksumAlgorithmMD5;
    }
    return qm_isFlagSet(options, "sha1") ? QMChecksumAlgorithmSHA1 : QMChecksumAlgorithmSHA256;
}

// Prints the digest of one file or, in JSON mode, adds its record. Answers the status.
std::int32_t checksumFile(const std::string& path, QMChecksumAlgorithm algorithm,
                          QMCLIRecords* records) {
    if (!platform::FileManager::fileExistsAtPath(path)) {
        qm_error("File not found: {}", path);
        return notFoundStatus;
    }
    const auto hash = QMChecksumService::checksumForFileAtPath(path, algorithm);
    if (!hash) {
        qm_error("Could not read: {}", path);
        return unreadableStatus;
    }
    const std::string file = platform::PathString::lastPathComponent(path);
    if (records == nullptr) {
        qm_print("{}  {}", *hash, file);
        return 0;
    }
    const std::string algorithmName(QMChecksumService::displayNameForAlgorithm(algorithm));
    records->add(platform::Json::Object{
        {"file", file}, {"path", path}, {"algorithm", algorithmName}, {"hash", *hash}});
    return 0;
}

} // namespace

std::int32_t QMCLIChecksumCommand::runWithArguments(const QMCLIStrings& arguments,
                                                    const QMCLIOptions& options) {
    if (arguments.empty() && !options.contains("verify")) {
        qm_error("No file specified. Usage: {}", usage());
        return usageStatus;
    }
    const QMChecksumAlgorithm algorithm = chosenAlgorithm(options);
    const bool json = qm_isFlagSet(options, "json");
    QMCLIRecords records;
    std::int32_t status = 0;
    for (const std::string& argument : arguments) {
        const std::int32_t fileStatus =
            checksumFile(qm_absolutePath(argument), algorithm, json ? &records : nullptr);
        status = fileStatus != 0 ? fileStatus : status;
    }
    records.end();
    return status;
}
