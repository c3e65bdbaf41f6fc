// SPDX-License-Identifier: Apache-2.0
#include "foundation/QMPreferencesKeys.h"

#include "platform/UserDefaults.h"
#include "tests/unit/support/EnvironmentVariable.h"
#include "tests/unit/support/StandardUserDefaults.h"

#include <array>
#include <cstdint>
#include <optional>
#include <set>
#include <string_view>

#include <gtest/gtest.h>

namespace {

using platform::PropertyList;
using platform::UserDefaults;

const PropertyList home("/home/x");
const PropertyList yes(true);
const PropertyList no(false);
const PropertyList emptyArray{PropertyList::Array()};
constexpr std::nullopt_t none = std::nullopt;

PropertyList integer(std::int64_t number) {
    return number;
}

struct Preference {
    std::string_view constant;
    std::string_view key;
    std::optional<PropertyList> value;
};

const std::array preferences{
    Preference{QMDefaultNewWindowPathKey, "QMDefaultNewWindowPath", home},
    Preference{QMRestoreWindowStateKey, "QMRestoreWindowState", yes},
    Preference{QMOpenFoldersInTabsKey, "QMOpenFoldersInTabs", yes},
    Preference{QMDefaultNewTabPathKey, "QMDefaultNewTabPath", home},
    Preference{QMDoubleClickOpensInOtherPaneKey, "QMDoubleClickOpensInOtherPane", no},
    Preference{QMShowDualPaneOnLaunchKey, "QMShowDualPaneOnLaunch", yes},
    Preference{QMDefaultRightPanePathKey, "QMDefaultRightPanePath", home},
    Preference{QMDefaultViewModeKey, "QMDefaultViewMode", integer(0)},
    Preference{QMShowHiddenFilesByDefaultKey, "QMShowHiddenFilesByDefault", no},
    Preference{QMFoldersOnTopKey, "QMFoldersOnTop", no},
    Preference{QMShowAllExtensionsKey, "QMShowAllExtensions", yes},
    Preference{QMWarnOnExtensionChangeKey, "QMWarnOnExtensionChange", yes},
    Preference{QMVisibleColumnsKey, "QMVisibleColumns", none},
    Preference{QMIconViewIconSizeKey, "QMIconViewIconSize", integer(64)},
    Preference{QMListTreeIconSizeKey, "QMListTreeIconSize", integer(1)},
    Preference{QMPathBarIconSizeKey, "QMPathBarIconSize", integer(1)},
    Preference{QMPathBarShowScrollerKey, "QMPathBarShowScroller", no},
    Preference{QMDefaultMarkdownPreviewModeKey, "QMDefaultMarkdownPreviewMode", integer(0)},
    Preference{QMDefaultCSVPreviewModeKey, "QMDefaultCSVPreviewMode", integer(0)},
    Preference{QMDefaultEMLPreviewModeKey, "QMDefaultEMLPreviewMode", integer(0)},
    Preference{QMShowRecentInFavoritesKey, "QMShowRecentInFavorites", yes},
    Preference{QMSidebarShowTagsKey, "QMSidebarShowTags", yes},
    Preference{QMSidebarShowDropStackKey, "QMSidebarShowDropStack", yes},
    Preference{QMSidebarVolumeCapacityBarKey, "QMSidebarVolumeCapacityBar", yes},
    Preference{QMSidebarVolumeDetailTextKey, "QMSidebarVolumeDetailText", yes},
    Preference{QMSidebarVolumeDetailFormatKey, "QMSidebarVolumeDetailFormat", integer(0)},
    Preference{QMSidebarVolumePercentBadgeKey, "QMSidebarVolumePercentBadge", no},
    Preference{QMSidebarVolumeWarningTintKey, "QMSidebarVolumeWarningTint", yes},
    Preference{QMSidebarVolumeWarningThresholdKey, "QMSidebarVolumeWarningThreshold", integer(90)},
    Preference{QMSidebarShowFavoritesKey, "QMSidebarShowFavorites", yes},
    Preference{QMSidebarShowDevicesKey, "QMSidebarShowDevices", yes},
    Preference{QMSidebarShowNetworkKey, "QMSidebarShowNetwork", yes},
    Preference{QMSidebarShowSSHKey, "QMSidebarShowSSH", yes},
    Preference{QMFullDiskAccessPromptDismissedKey, "QMFullDiskAccessPromptDismissed", no},
    Preference{QMMaxConcurrentTransfersKey, "QMMaxConcurrentTransfers", integer(2)},
    Preference{QMMaxTransferRetriesKey, "QMMaxTransferRetries", integer(3)},
    Preference{QMMaxDownloadSpeedKey, "QMMaxDownloadSpeed", integer(0)},
    Preference{QMMaxUploadSpeedKey, "QMMaxUploadSpeed", integer(0)},
    Preference{QMTransferConflictResolutionKey, "QMTransferConflictResolution", integer(0)},
    Preference{QMProxyTypeKey, "QMProxyType", integer(0)},
    Preference{QMProxyHostKey, "QMProxyHost", none},
    Preference{QMProxyPortKey, "QMProxyPort", integer(0)},
    Preference{QMProxyUserKey, "QMProxyUser", none},
    Preference{QMWarnBeforeLocalDeleteKey, "QMWarnBeforeLocalDelete", no},
    Preference{QMWarnBeforeEmptyTrashKey, "QMWarnBeforeEmptyTrash", yes},
    Preference{QMSuppressDSStoreOnNetworkKey, "QMSuppressDSStoreOnNetwork", yes},
    Preference{QMSearchScopeKey, "QMSearchScope", integer(0)},
    Preference{QMConnectionTimeoutKey, "QMConnectionTimeout", integer(30)},
    Preference{QMDefaultSSHPortKey, "QMDefaultSSHPort", integer(22)},
    Preference{QMUseSSHConfigKey, "QMUseSSHConfig", yes},
    Preference{QMAllowSelfSignedCertsKey, "QMAllowSelfSignedCerts", yes},
    Preference{QMEnableProtocolLoggingKey, "QMEnableProtocolLogging", no},
    Preference{QMMetadataEnabledKey, "QMMetadataEnabled", yes},
    Preference{QMGitEnabledKey, "QMGitEnabled", yes},
    Preference{QMGitShowBadgesKey, "QMGitShowBadges", yes},
    Preference{QMGitConfirmDiscardKey, "QMGitConfirmDiscard", yes},
    Preference{QMDisabledPluginsKey, "QMDisabledPlugins", emptyArray},
    Preference{QMApprovedPluginsKey, "QMApprovedPlugins", emptyArray},
    Preference{QMSidebarWidthKey, "QMSidebarWidth", none},
    Preference{QMPreviewPaneWidthKey, "QMPreviewPaneWidth", none},
    Preference{QMPaneSplitPositionKey, "QMPaneSplitPosition", none},
    Preference{QMTerminalSplitPositionKey, "QMTerminalSplitPosition", none},
    Preference{QMDropStackSplitPositionKey, "QMDropStackSplitPosition", none},
    Preference{QMColumnWidthsKey, "QMColumnWidths", none},
    Preference{QMColumnOrderKey, "QMColumnOrder", none},
    Preference{QMSidebarFavoritesKey, "QMSidebarFavorites", none},
    Preference{QMRecentFoldersKey, "QMRecentFolders", none},
    Preference{QMDropStackPathsKey, "QMDropStackPaths", none},
    Preference{QMRemoteBookmarksKey, "QMRemoteBookmarks", none},
    Preference{QMWindowStateKey, "QMWindowState", none},
};

class QMPreferencesKeysTest : public testing::Test {
protected:
    void SetUp() override { QMPreferencesKeys::registerDefaults(); }
    EnvironmentVariable ownHome{"HOME", "/home/x"};
    StandardUserDefaults settings;
};

TEST_F(QMPreferencesKeysTest, SpellTheirNames) {
    std::set<std::string_view> keys;
    for (const Preference& preference : preferences) {
        EXPECT_EQ(preference.constant, preference.key);
        keys.insert(preference.constant);
    }
    EXPECT_EQ(keys.size(), 70);
    EXPECT_EQ(QMPreferencesDidChangeNotification, "QMPreferencesDidChange");
}

TEST_F(QMPreferencesKeysTest, HaveTheirDefaults) {
    int count = 0;
    for (const Preference& preference : preferences) {
        EXPECT_EQ(UserDefaults::standard().objectForKey(preference.key), preference.value)
            << preference.key;
        count += preference.value ? 1 : 0;
    }
    EXPECT_EQ(count, 55);
}

TEST_F(QMPreferencesKeysTest, ReadAsTheirKinds) {
    const UserDefaults& defaults = UserDefaults::standard();
    EXPECT_EQ(defaults.integerForKey(QMConnectionTimeoutKey), 30);
    EXPECT_EQ(defaults.integerForKey(QMDefaultSSHPortKey), 22);
    EXPECT_TRUE(defaults.boolForKey(QMMetadataEnabledKey));
    EXPECT_FALSE(defaults.boolForKey(QMFoldersOnTopKey));
    EXPECT_EQ(*defaults.arrayForKey(QMDisabledPluginsKey), PropertyList::Array());
    EXPECT_EQ(defaults.stringForKey(QMDefaultNewWindowPathKey), "/home/x");
    EXPECT_EQ(defaults.stringForKey(QMProxyHostKey), std::nullopt);
    EXPECT_EQ(defaults.integerForKey(QMSidebarWidthKey), 0);
}

TEST_F(QMPreferencesKeysTest, GiveWayToWhatTheUserHasSet) {
    settings.save(PropertyList::Dictionary{{"QMMetadataEnabled", false}, {"QMProxyPort", "8080"}});
    const UserDefaults& defaults = UserDefaults::standard();
    EXPECT_FALSE(defaults.boolForKey(QMMetadataEnabledKey));
    EXPECT_EQ(defaults.integerForKey(QMProxyPortKey), 8080);
    QMPreferencesKeys::registerDefaults();
    EXPECT_FALSE(defaults.boolForKey(QMMetadataEnabledKey));
    EXPECT_TRUE(defaults.boolForKey(QMGitEnabledKey));
}

TEST_F(QMPreferencesKeysTest, TakeTheHomeDirectoryAnewWhenRegisteredAgain) {
    const EnvironmentVariable moved("HOME", "/home/y");
    EXPECT_EQ(UserDefaults::standard().stringForKey(QMDefaultNewTabPathKey), "/home/x");
    QMPreferencesKeys::registerDefaults();
    for (const auto key :
         {QMDefaultNewWindowPathKey, QMDefaultNewTabPathKey, QMDefaultRightPanePathKey}) {
        EXPECT_EQ(UserDefaults::standard().stringForKey(key), "/home/y");
    }
}

TEST_F(QMPreferencesKeysTest, LeaveOtherDefaultsAlone) {
    UserDefaults::standard().registerDefaults({{"QMMetadataEnabled_5", PropertyList::Array()}});
    QMPreferencesKeys::registerDefaults();
    EXPECT_EQ(*UserDefaults::standard().arrayForKey("QMMetadataEnabled_5"), PropertyList::Array());
}

TEST(QMPreferences, HaveNoDefaultsUntilTheyAreRegistered) {
    const StandardUserDefaults settings;
    for (const Preference& preference : preferences) {
        EXPECT_EQ(UserDefaults::standard().objectForKey(preference.key), std::nullopt);
    }
    EXPECT_FALSE(UserDefaults::standard().boolForKey(QMMetadataEnabledKey));
}

} // namespace
