// SPDX-License-Identifier: Apache-2.0
#include "foundation/QMPreferencesKeys.h"

#include "platform/FileManager.h"
#include "platform/PropertyList.h"
#include "platform/UserDefaults.h"

#include <array>
#include <cstdint>
#include <string>
#include <utility>
#include <variant>

namespace {

using platform::PropertyList;

struct HomeDirectory {};
struct EmptyArray {};

struct Default {
    std::string_view key;
    std::variant<bool, std::int32_t, HomeDirectory, EmptyArray> value;
};

constexpr auto defaults = std::to_array<Default>({
    {QMDefaultNewWindowPathKey, HomeDirectory()},
    {QMRestoreWindowStateKey, true},
    {QMOpenFoldersInTabsKey, true},
    {QMDefaultNewTabPathKey, HomeDirectory()},
    {QMDoubleClickOpensInOtherPaneKey, false},
    {QMShowDualPaneOnLaunchKey, true},
    {QMDefaultRightPanePathKey, HomeDirectory()},
    {QMDefaultViewModeKey, 0},
    {QMShowHiddenFilesByDefaultKey, false},
    {QMFoldersOnTopKey, false},
    {QMShowAllExtensionsKey, true},
    {QMWarnOnExtensionChangeKey, true},
    {QMIconViewIconSizeKey, 64},
    {QMListTreeIconSizeKey, 1},
    {QMPathBarIconSizeKey, 1},
    {QMPathBarShowScrollerKey, false},
    {QMDefaultMarkdownPreviewModeKey, 0},
    {QMDefaultCSVPreviewModeKey, 0},
    {QMDefaultEMLPreviewModeKey, 0},
    {QMShowRecentInFavoritesKey, true},
    {QMSidebarShowTagsKey, true},
    {QMSidebarShowDropStackKey, true},
    {QMSidebarVolumeCapacityBarKey, true},
    {QMSidebarVolumeDetailTextKey, true},
    {QMSidebarVolumeDetailFormatKey, 0},
    {QMSidebarVolumePercentBadgeKey, false},
    {QMSidebarVolumeWarningTintKey, true},
    {QMSidebarVolumeWarningThresholdKey, 90},
    {QMSidebarShowFavoritesKey, true},
    {QMSidebarShowDevicesKey, true},
    {QMSidebarShowNetworkKey, true},
    {QMSidebarShowSSHKey, true},
    {QMFullDiskAccessPromptDismissedKey, false},
    {QMMaxConcurrentTransfersKey, 2},
    {QMMaxTransferRetriesKey, 3},
    {QMMaxDownloadSpeedKey, 0},
    {QMMaxUploadSpeedKey, 0},
    {QMTransferConflictResolutionKey, 0},
    {QMProxyTypeKey, 0},
    {QMProxyPortKey, 0},
    {QMWarnBeforeLocalDeleteKey, false},
    {QMWarnBeforeEmptyTrashKey, true},
    {QMSuppressDSStoreOnNetworkKey, true},
    {QMSearchScopeKey, 0},
    {QMConnectionTimeoutKey, 30},
    {QMDefaultSSHPortKey, 22},
    {QMUseSSHConfigKey, true},
    {QMAllowSelfSignedCertsKey, true},
    {QMEnableProtocolLoggingKey, false},
    {QMMetadataEnabledKey, true},
    {QMGitEnabledKey, true},
    {QMGitShowBadgesKey, true},
    {QMGitConfirmDiscardKey, true},
    {QMDisabledPluginsKey, EmptyArray()},
    {QMApprovedPluginsKey, EmptyArray()},
});

/// Makes property-list values of the table's.
struct Registered {
    std::string home;

    PropertyList operator()(bool flag) const { return flag; }
    PropertyList operator()(std::int32_t number) const { return std::int64_t{number}; }
    PropertyList operator()(HomeDirectory /*unused*/) const { return home; }
    PropertyList operator()(EmptyArray /*unused*/) const { return PropertyList::Array(); }
};

} // namespace

void QMPreferencesKeys::registerDefaults() {
    // Who has no home starts at the root, as after logging in.
    const Registered registered{platform::FileManager::homeDirectory().value_or("/")};
    platform::UserDefaults& user = platform::UserDefaults::standard();
    PropertyList::Dictionary values;
    for (const Default& each : defaults) {
        values.emplace(each.key, std::visit(registered, each.value));
    }
    user.registerDefaults(std::move(values));
}
