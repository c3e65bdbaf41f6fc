// SPDX-License-Identifier: Apache-2.0
#include "services/QMChecksumService.h"

#include "foundation/QMData.h"
#include "foundation/QMFileHandle.h"
#include "platform/Digest.h"

#include <new>
#include <vector>

namespace Digest = platform::Digest;
using platform::DataView;

namespace {

constexpr std::size_t chunkSize = 65536;

// One running digest of each algorithm, of which one is fed.
struct Contexts {
    Digest::SHA256 sha256;
    Digest::SHA1 sha1;
    Digest::SHA512 sha512;
    Digest::MD5 md5;

    // Calls `use` with the context of `algorithm`; not at all for an invalid one.
    template <class Use>
    void select(QMChecksumAlgorithm algorithm, const Use& use) {
        switch (algorithm) {
        case QMChecksumAlgorithmSHA256: use(sha256); break;
        case QMChecksumAlgorithmSHA1: use(sha1); break;
        case QMChecksumAlgorithmSHA512: use(sha512); break;
        case QMChecksumAlgorithmMD5: use(md5); break;
        }
    }
};

void feed(Contexts& contexts, QMChecksumAlgorithm algorithm, platform::FileHandle& file) {
    std::vector<std::byte> buffer(chunkSize);
    while (true) {
        const auto count = qm_readDataUpToLength(file, buffer);
        if (count.value_or(0) == 0) {
            return;
        }
        const DataView chunk(buffer.data(), *count);
        contexts.select(algorithm, [chunk](auto& context) { context.update(chunk); });
    }
}

std::optional<std::string> finish(Contexts& contexts, QMChecksumAlgorithm algorithm) {
    std::optional<std::string> text;
    contexts.select(algorithm, [&text](auto& context) {
        const auto digest = context.finish();
        text = QMChecksumService::hexString(digest.data(), digest.size());
    });
    return text;
}

} // namespace

std::string_view QMChecksumService::displayNameForAlgorithm(QMChecksumAlgorithm algorithm) {
    switch (algorithm) {
    case QMChecksumAlgorithmSHA1: return "SHA-1";
    case QMChecksumAlgorithmSHA512: return "SHA-512";
    case QMChecksumAlgorithmMD5: return "MD5";
    default: return "SHA-256";
    }
}

std::optional<std::string> QMChecksumService::checksumForFileAtPath(const std::string& path,
                                                                    QMChecksumAlgorithm algorithm) {
    auto file = platform::FileHandle::forReadingAtPath(path);
    return file ? checksumForFileHandle(*file, algorithm) : std::nullopt;
}

std::optional<std::string> QMChecksumService::checksumForFileHandle(platform::FileHandle& file,
                                                                    QMChecksumAlgorithm algorithm) {
    try {
        Contexts contexts;
        feed(contexts, algorithm, file);
        return finish(contexts, algorithm);
    } catch (const std::bad_alloc&) {
        return std::nullopt;
    }
}

std::string QMChecksumService::hexString(const std::byte* bytes, std::size_t length) {
    return qm_hexString(DataView(bytes, length));
}
