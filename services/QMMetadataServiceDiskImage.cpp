// SPDX-License-Identifier: Apache-2.0
#include "foundation/QMString.h"
#include "platform/LocalizedStrings.h"
#include "platform/PropertyListReadings.h"
#include "services/QMDiskImageEntries.h"
#include "services/QMMetadataField.h"

#include <array>
#include <utility>

using platform::PropertyList;
using platform::LocalizedStrings::stringForKey;

namespace {

using Info = PropertyList::Dictionary;
using Value = std::optional<std::string>;

// The value of the first of `keys` that has one, of whatever kind.
const PropertyList* firstValue(const Info& info, std::initializer_list<std::string_view> keys) {
    for (const std::string_view key : keys) {
        const auto found = info.find(key);
        if (found != info.end()) {
            return &found->second;
        }
    }
    return nullptr;
}

// A text that is not empty. Nothing else has a length.
Value text(const PropertyList* value) {
    const std::string* const characters = value == nullptr ? nullptr : value->string();
    return characters == nullptr || characters->empty() ? std::nullopt : Value(*characters);
}

Value imageFormat(const Info& info) {
    return text(firstValue(info, {"Format Description", "Format", "format"}));
}

// The size of the disk in it, in spite of the key: the compressed one stands in for that.
Value compressedSize(const Info& info) {
    const PropertyList* const size = firstValue(info, {"Total Bytes", "Compressed Bytes"});
    return size == nullptr ? std::nullopt
                           : Value(qm_humanReadableSize(platform::integerValue(*size)));
}

Value diskImageEncrypted(const Info& info) {
    const PropertyList* const isEncrypted = firstValue(info, {"Encrypted", "encrypted"});
    return isEncrypted == nullptr ? std::nullopt
                                  : Value(stringForKey(boolValue(*isEncrypted) ? "yes" : "no"));
}

Value partitionScheme(const Info& info) {
    const PropertyList* const partitions = firstValue(info, {"partitions"});
    return text(partitions == nullptr ? nullptr : partitions->valueForKey("partition-scheme"));
}

// In the order of display. A field without a value has no entry.
constexpr std::array<QMMetadataField<Info>, 4> fields{{
    {"imageFormat", &QMMetadataEntry::primaryEntryWithKey, "meta.diskImage.format", imageFormat},
    {"compressedSize", &QMMetadataEntry::entryWithKey, "meta.diskImage.compressedSize",
     compressedSize},
    {"diskImageEncrypted", &QMMetadataEntry::entryWithKey, "meta.diskImage.encrypted",
     diskImageEncrypted},
    {"partitionScheme", &QMMetadataEntry::entryWithKey, "meta.diskImage.partitionScheme",
     partitionScheme},
}};

} // namespace

void qm_appendDiskImageEntries(const Info& info, const QMMetadataService::Keys& enabledKeys,
                               QMMetadataEntries& into) {
    qm_appendFields<Info>(fields, info, enabledKeys, into);
}

void QMMetadataService::extractDiskImageMetadata(const std::string& path, const Keys& enabledKeys,
                                                 QMMetadataEntries& into) const {
    const auto& service =
        m_settings.diskImages ? m_settings.diskImages : QMDiskImageService::sharedService();
    if (const auto info = service->diskImageInfoForPath(path)) {
        qm_appendDiskImageEntries(*info, enabledKeys, into);
    }
}
