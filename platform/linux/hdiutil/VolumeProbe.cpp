// SPDX-License-Identifier: Apache-2.0
#include "platform/linux/hdiutil/VolumeProbe.h"

#include "platform/linux/Descriptor.h"
#include "platform/linux/Utf8.h"
#include "platform/linux/hdiutil/SparseWrite.h"
#include "platform/linux/hdiutil/VolumeLandmarks.h"

#include <algorithm>
#include <array>
#include <limits>
#include <memory>
#include <string_view>
#include <utility>
#include <vector>

#include <unistd.h>

#include <blkid/blkid.h>
#include <sys/mman.h>

namespace platform::hdiutil {
namespace {

constexpr std::size_t copySize = 64U << 10U;

// A file in memory that has the landmarks of a volume in their places and nothing in between:
// libblkid reads from descriptors alone, and the volume may be compressed in an image.
class Excerpt {
public:
    explicit Excerpt(const ByteSource& bytes)
        : m_file(::memfd_create("volume", MFD_CLOEXEC)) {
        m_isComplete = descriptor() >= 0 && takeSize(bytes.size());
        for (const Stretch& stretch : volumeLandmarks(bytes)) {
            m_isComplete = m_isComplete && copy(bytes, stretch);
        }
    }

    [[nodiscard]] bool isComplete() const { return m_isComplete; }
    [[nodiscard]] int descriptor() const { return m_file.number(); }

private:
    [[nodiscard]] bool takeSize(std::uint64_t size) const {
        return size <= static_cast<std::uint64_t>(std::numeric_limits<off_t>::max()) &&
               ::ftruncate(descriptor(), static_cast<off_t>(size)) == 0;
    }

    [[nodiscard]] bool copy(const ByteSource& bytes, const Stretch& stretch) const {
        std::vector<std::byte> buffer(copySize);
        for (std::uint64_t done = 0; done < stretch.length;) {
            const auto length = std::min<std::uint64_t>(copySize, stretch.length - done);
            const auto piece = std::span(buffer).first(length);
            // A part that is damaged must not hide the rest.
            if (bytes.read(stretch.offset + done, piece) &&
                !writeSparsely(descriptor(), stretch.offset + done, piece)) {
                return false;
            }
            done += length;
        }
        return true;
    }

    Descriptor m_file;
    bool m_isComplete = false;
};

struct FreeProbe {
    void operator()(blkid_probe probe) const { ::blkid_free_probe(probe); }
};
using Probe = std::unique_ptr<std::remove_pointer_t<blkid_probe>, FreeProbe>;

// A value that the probe found, as text; empty without it.
std::string valueOf(const Probe& probe, const char* name) {
    const char* data = nullptr;
    std::size_t size = 0;
    if (::blkid_probe_lookup_value(probe.get(), name, &data, &size) != 0) {
        return "";
    }
    const std::string_view value(data, size);
    std::string text = replacingInvalidUTF8(value.substr(0, value.find('\0')));
    text.erase(text.find_last_not_of(" \t\r\n") + 1);
    return text;
}

bool findVolume(const Probe& probe, int descriptor) {
    constexpr int wanted =
        BLKID_SUBLKS_TYPE | BLKID_SUBLKS_LABEL | BLKID_SUBLKS_UUID | BLKID_SUBLKS_USAGE;
    return probe != nullptr && ::blkid_probe_set_device(probe.get(), descriptor, 0, 0) == 0 &&
           ::blkid_probe_enable_superblocks(probe.get(), 1) == 0 &&
           ::blkid_probe_set_superblocks_flags(probe.get(), wanted) == 0 &&
           ::blkid_do_safeprobe(probe.get()) == 0;
}

} // namespace

std::optional<Volume> probeVolume(const ByteSource& bytes) {
    const Excerpt excerpt(bytes);
    if (!excerpt.isComplete()) {
        return std::nullopt;
    }
    const Probe probe(::blkid_new_probe());
    if (!findVolume(probe, excerpt.descriptor())) {
        return std::nullopt;
    }
    Volume volume{valueOf(probe, "TYPE"), valueOf(probe, "LABEL"), valueOf(probe, "UUID"),
                  valueOf(probe, "USAGE") == "filesystem"};
    return volume.type.empty() ? std::nullopt : std::optional(std::move(volume));
}

std::string volumeKind(const Volume& volume) {
    // Most words are the same in both worlds: "apfs", "exfat", "ntfs", "udf", "hfs".
    static constexpr std::array<std::pair<std::string_view, const char*>, 3> kinds{{
        {"iso9660", "cd9660"},
        {"vfat", "msdos"},
        {"hfsplus", "hfs"},
    }};
    const auto* const kind =
        std::ranges::find(kinds, volume.type, &decltype(kinds)::value_type::first);
    return kind == kinds.end() ? volume.type : kind->second;
}

} // namespace platform::hdiutil
