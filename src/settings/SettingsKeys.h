#pragma once

#include <cstdint>
#include <string_view>

namespace ondrel::settings {

// A key of the user defaults with the value that stands for an absent one.
template <class T>
struct Key {
  std::string_view name;
  T fallback;
};

// Every key that the program stores. There is no cache: readers read at the point of use.
namespace keys {

inline constexpr Key<bool> hideOnLoseFocus{"_hideOnLoseFocus", false};
inline constexpr Key<bool> doHideWhenInComposeMode{"_doHideWhenInComposeMode", false};
inline constexpr Key<bool> composeInNewWindow{"_composeInNewWindow", false};
inline constexpr Key<bool> hideInternalLinks{"_hideInternalLinks", false};
inline constexpr Key<double> defaultPageZoom{"_defaultPageZoom", 1.0}; // of new tabs
inline constexpr Key<bool> showMenuBarExtra{"_showMenuBarExtra", true};
inline constexpr Key<bool> defaultClientCheck{"_defaultClientCheck", true};
inline constexpr Key<std::string_view> selectedSettingsTab{"_selectedSettingsTab", "general"};
inline constexpr std::string_view fastmailEnvironment =
    "_fastmailEnvironment"; // falls back to production's address
inline constexpr Key<bool> checkSpelling{"_checkSpelling", true};
// The dictionaries, with spaces between; absent for those of the user's languages.
inline constexpr std::string_view spellingLanguages = "_spellingLanguages";
inline constexpr Key<bool> runJS{"_runJS", false};
inline constexpr Key<bool> injectCSS{"_injectCSS", false};
inline constexpr Key<bool> highlightTagEnabled{"_highlightTagEnabled", false};
inline constexpr Key<std::string_view> highlightTagName{"_highlightTagName", "Highlighted"};
inline constexpr Key<bool> mcpServerEnabled{"_mcpServerEnabled", false};
inline constexpr Key<std::int64_t> mcpServerPort{"_mcpServerPort", 7777};
inline constexpr std::string_view dismissedAnnouncementID =
    "_dismissedAnnouncementID"; // absent until one is dismissed
// Where file panels start; absent until one was used.
inline constexpr std::string_view lastSaveFolder = "_lastSaveFolder";
inline constexpr std::string_view lastOpenFolder = "_lastOpenFolder";
// Which files beside the highlights' own have been imported; absent until one was.
inline constexpr std::string_view importedHighlightFiles = "_importedHighlightFiles";
inline constexpr Key<bool> automaticallyChecksForUpdates{"_automaticallyChecksForUpdates", true};
inline constexpr Key<bool> automaticallyDownloadsUpdates{"_automaticallyDownloadsUpdates", false};
inline constexpr Key<double> updateCheckInterval{"_updateCheckInterval", 86400}; // seconds
// Of the last one that came to an answer, in seconds since 1970; absent until one did.
inline constexpr std::string_view lastUpdateCheckDate = "_lastUpdateCheckDate";
// The user has been told that the program goes on without windows.
inline constexpr Key<bool> backgroundNoticeShown{"_backgroundNoticeShown", false};
// A secret: what others give back of a notification that outlives the program is known by it.
inline constexpr std::string_view notificationKey = "_notificationKey";
inline constexpr Key<std::int64_t> lastMigratedBuild{"_lastMigratedBuild", 0};

// Between these the user chooses; each tab goes on from there in steps.
inline constexpr double smallestDefaultZoom = 0.8;
inline constexpr double largestDefaultZoom = 1.2;

} // namespace keys

} // namespace ondrel::settings
