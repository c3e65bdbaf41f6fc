// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "platform/Export.h"

#include <string_view>

/// The names under which the user's preferences are kept, in the order of their declaration. What
/// reads a preference asks platform::UserDefaults for it by its constant, and knows what its
/// numbers mean and in which units they are.
/// @{

// Windows and tabs.
inline constexpr std::string_view QMDefaultNewWindowPathKey = "QMDefaultNewWindowPath";
inline constexpr std::string_view QMRestoreWindowStateKey = "QMRestoreWindowState";
inline constexpr std::string_view QMOpenFoldersInTabsKey = "QMOpenFoldersInTabs";
inline constexpr std::string_view QMDefaultNewTabPathKey = "QMDefaultNewTabPath";
inline constexpr std::string_view QMDoubleClickOpensInOtherPaneKey =
    "QMDoubleClickOpensInOtherPane";
inline constexpr std::string_view QMShowDualPaneOnLaunchKey = "QMShowDualPaneOnLaunch";
inline constexpr std::string_view QMDefaultRightPanePathKey = "QMDefaultRightPanePath";

// Views.
inline constexpr std::string_view QMDefaultViewModeKey = "QMDefaultViewMode";
inline constexpr std::string_view QMShowHiddenFilesByDefaultKey = "QMShowHiddenFilesByDefault";
inline constexpr std::string_view QMFoldersOnTopKey = "QMFoldersOnTop";
inline constexpr std::string_view QMShowAllExtensionsKey = "QMShowAllExtensions";
inline constexpr std::string_view QMWarnOnExtensionChangeKey = "QMWarnOnExtensionChange";
inline constexpr std::string_view QMVisibleColumnsKey = "QMVisibleColumns";
inline constexpr std::string_view QMIconViewIconSizeKey = "QMIconViewIconSize";
inline constexpr std::string_view QMListTreeIconSizeKey = "QMListTreeIconSize";
inline constexpr std::string_view QMPathBarIconSizeKey = "QMPathBarIconSize";
inline constexpr std::string_view QMPathBarShowScrollerKey = "QMPathBarShowScroller";

// Previews.
inline constexpr std::string_view QMDefaultMarkdownPreviewModeKey = "QMDefaultMarkdownPreviewMode";
inline constexpr std::string_view QMDefaultCSVPreviewModeKey = "QMDefaultCSVPreviewMode";
inline constexpr std::string_view QMDefaultEMLPreviewModeKey = "QMDefaultEMLPreviewMode";

// The sidebar.
inline constexpr std::string_view QMShowRecentInFavoritesKey = "QMShowRecentInFavorites";
inline constexpr std::string_view QMSidebarShowTagsKey = "QMSidebarShowTags";
inline constexpr std::string_view QMSidebarShowDropStackKey = "QMSidebarShowDropStack";
inline constexpr std::string_view QMSidebarVolumeCapacityBarKey = "QMSidebarVolumeCapacityBar";
inline constexpr std::string_view QMSidebarVolumeDetailTextKey = "QMSidebarVolumeDetailText";
inline constexpr std::string_view QMSidebarVolumeDetailFormatKey = "QMSidebarVolumeDetailFormat";
inline constexpr std::string_view QMSidebarVolumePercentBadgeKey = "QMSidebarVolumePercentBadge";
inline constexpr std::string_view QMSidebarVolumeWarningTintKey = "QMSidebarVolumeWarningTint";
inline constexpr std::string_view QMSidebarVolumeWarningThresholdKey =
    "QMSidebarVolumeWarningThreshold";
inline constexpr std::string_view QMSidebarShowFavoritesKey = "QMSidebarShowFavorites";
inline constexpr std::string_view QMSidebarShowDevicesKey = "QMSidebarShowDevices";
inline constexpr std::string_view QMSidebarShowNetworkKey = "QMSidebarShowNetwork";
inline constexpr std::string_view QMSidebarShowSSHKey = "QMSidebarShowSSH";

// Access to the disk.
inline constexpr std::string_view QMFullDiskAccessPromptDismissedKey =
    "QMFullDiskAccessPromptDismissed";

// Transfers.
inline constexpr std::string_view QMMaxConcurrentTransfersKey = "QMMaxConcurrentTransfers";
inline constexpr std::string_view QMMaxTransferRetriesKey = "QMMaxTransferRetries";
inline constexpr std::string_view QMMaxDownloadSpeedKey = "QMMaxDownloadSpeed";
inline constexpr std::string_view QMMaxUploadSpeedKey = "QMMaxUploadSpeed";
inline constexpr std::string_view QMTransferConflictResolutionKey = "QMTransferConflictResolution";

// The proxy.
inline constexpr std::string_view QMProxyTypeKey = "QMProxyType";
inline constexpr std::string_view QMProxyHostKey = "QMProxyHost";
inline constexpr std::string_view QMProxyPortKey = "QMProxyPort";
inline constexpr std::string_view QMProxyUserKey = "QMProxyUser";

// Files.
inline constexpr std::string_view QMWarnBeforeLocalDeleteKey = "QMWarnBeforeLocalDelete";
inline constexpr std::string_view QMWarnBeforeEmptyTrashKey = "QMWarnBeforeEmptyTrash";
inline constexpr std::string_view QMSuppressDSStoreOnNetworkKey = "QMSuppressDSStoreOnNetwork";

// Searching.
inline constexpr std::string_view QMSearchScopeKey = "QMSearchScope";

// Connections.
inline constexpr std::string_view QMConnectionTimeoutKey = "QMConnectionTimeout";
inline constexpr std::string_view QMDefaultSSHPortKey = "QMDefaultSSHPort";
inline constexpr std::string_view QMUseSSHConfigKey = "QMUseSSHConfig";
inline constexpr std::string_view QMAllowSelfSignedCertsKey = "QMAllowSelfSignedCerts";
inline constexpr std::string_view QMEnableProtocolLoggingKey = "QMEnableProtocolLogging";

// Metadata.
inline constexpr std::string_view QMMetadataEnabledKey = "QMMetadataEnabled";

// Git.
inline constexpr std::string_view QMGitEnabledKey = "QMGitEnabled";
inline constexpr std::string_view QMGitShowBadgesKey = "QMGitShowBadges";
inline constexpr std::string_view QMGitConfirmDiscardKey = "QMGitConfirmDiscard";

// Plugins.
inline constexpr std::string_view QMDisabledPluginsKey = "QMDisabledPlugins";
inline constexpr std::string_view QMApprovedPluginsKey = "QMApprovedPlugins";

// State of windows and layout.
inline constexpr std::string_view QMSidebarWidthKey = "QMSidebarWidth";
inline constexpr std::string_view QMPreviewPaneWidthKey = "QMPreviewPaneWidth";
inline constexpr std::string_view QMPaneSplitPositionKey = "QMPaneSplitPosition";
inline constexpr std::string_view QMTerminalSplitPositionKey = "QMTerminalSplitPosition";
inline constexpr std::string_view QMDropStackSplitPositionKey = "QMDropStackSplitPosition";
inline constexpr std::string_view QMColumnWidthsKey = "QMColumnWidths";
inline constexpr std::string_view QMColumnOrderKey = "QMColumnOrder";
inline constexpr std::string_view QMSidebarFavoritesKey = "QMSidebarFavorites";
inline constexpr std::string_view QMRecentFoldersKey = "QMRecentFolders";
inline constexpr std::string_view QMDropStackPathsKey = "QMDropStackPaths";
inline constexpr std::string_view QMRemoteBookmarksKey = "QMRemoteBookmarks";
inline constexpr std::string_view QMWindowStateKey = "QMWindowState";

/// @}

/// The name by which applications announce to each other that preferences have changed. Nothing in
/// this library posts it.
inline constexpr std::string_view QMPreferencesDidChangeNotification = "QMPreferencesDidChange";

/// The defaults of the preferences.
class QM_EXPORT QMPreferencesKeys {
public:
    /// Registers a default for most preferences in platform::UserDefaults::standard(), beneath what
    /// the user has set; the paths among them are his home directory as it is now. Called again, it
    /// registers the same. Nothing is written. The preferences without a default are
    /// QMVisibleColumns, QMProxyHost, QMProxyUser, and the state of windows and layout.
    ///
    /// For the application: the command-line tool registers nothing. Any thread.
    static void registerDefaults();
};
