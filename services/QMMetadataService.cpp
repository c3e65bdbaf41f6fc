// SPDX-License-Identifier: Apache-2.0
#include "services/QMMetadataService.h"

#include "platform/Collation.h"
#include "platform/Format.h"
#include "platform/LocalizedStrings.h"
#include "platform/UserDefaults.h"
#include "services/QMMetadataCatalogue.h"

#include <algorithm>
#include <utility>

using platform::PropertyList;
using platform::LocalizedStrings::stringForKey;

const std::shared_ptr<QMMetadataService>& QMMetadataService::sharedService() {
    // Never destroyed: workers may still use it while the process ends.
    static const auto& service = *new std::shared_ptr<QMMetadataService>(init());
    return service;
}

std::shared_ptr<QMMetadataService> QMMetadataService::init() {
    return init({});
}

std::shared_ptr<QMMetadataService> QMMetadataService::init(Settings settings) {
    return std::shared_ptr<QMMetadataService>(new QMMetadataService(std::move(settings)));
}

QMMetadataService::QMMetadataService(Settings settings)
    : m_settings(std::move(settings)) {}

QMMetadataCategory QMMetadataService::categoryForExtension(std::string_view extension) {
    return qm_metadataCategoryForExtension(platform::Collation::lowercase(extension));
}

std::string QMMetadataService::nameForCategory(QMMetadataCategory category) {
    return stringForKey(std::string(qm_metadataNameKeyForCategory(category)));
}

std::span<const std::string_view>
QMMetadataService::availableKeysForCategory(QMMetadataCategory category) {
    return qm_metadataKeysForCategory(category);
}

std::shared_ptr<const QMMetadataService::Keys>
QMMetadataService::enabledKeysForCategory(QMMetadataCategory category) {
    const auto number = static_cast<std::int64_t>(category);
    if (auto stored = platform::UserDefaults::standard().arrayForKey(
            platform::format("QMMetadataEnabled_{}", number))) {
        return stored;
    }
    Keys keys;
    for (const std::string_view key : availableKeysForCategory(category)) {
        keys.emplace_back(std::string(key));
    }
    return std::make_shared<const Keys>(std::move(keys));
}

bool QMMetadataService::containsKey(const Keys& keys, std::string_view key) {
    return std::ranges::any_of(keys, [key](const PropertyList& one) {
        return one.string() != nullptr && *one.string() == key;
    });
}

std::string QMMetadataService::localizedNameForKey(std::string_view key) {
    const auto label = qm_metadataLabelKeyForKey(key);
    return label ? stringForKey(std::string(*label)) : std::string(key);
}

std::optional<std::string_view>
QMMetadataService::programmingLanguageForExtension(std::string_view extension) {
    return qm_languageForExtension(extension);
}

std::optional<platform::MediaAssetProperties>
QMMetadataService::assetPropertiesOfFile(const std::string& path, bool wantsMetadata) const {
    return m_settings.assetReader ? m_settings.assetReader(path, wantsMetadata)
                                  : platform::mediaAssetPropertiesOfFile(path, wantsMetadata);
}
