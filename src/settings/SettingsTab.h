#pragma once

#include <array>
#include <optional>
#include <string_view>

namespace ondrel::settings {

// The panes of the settings window. The raw values are what the user defaults store.
enum class SettingsTab { general, userinterface, shortcuts, advanced, update, donation };

inline constexpr std::array<std::string_view, 6> settingsTabRawValues = {
    "general", "userinterface", "shortcuts", "advanced", "update", "donation"};

constexpr std::string_view rawValue(SettingsTab tab) {
  return settingsTabRawValues[static_cast<std::size_t>(tab)];
}

constexpr std::optional<SettingsTab> settingsTab(std::string_view raw) {
  for (std::size_t i = 0; i < settingsTabRawValues.size(); ++i)
    if (settingsTabRawValues[i] == raw)
      return static_cast<SettingsTab>(i);
  return std::nullopt;
}

} // namespace ondrel::settings
