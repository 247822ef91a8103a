#pragma once

#include <string>
#include <string_view>

namespace ondrel::platform {
class Directories;
class UserDefaults;
} // namespace ondrel::platform

namespace ondrel::platform::windows {

// Where the file panels start: in the folder that a panel of the same kind was used in last, kept over a
// restart, else in Downloads, which is made if it is missing, else at home.
class PanelFolders {
 public:
  // Both outlive it.
  PanelFolders(UserDefaults& defaults, const Directories& directories)
      : defaults_(defaults), directories_(directories) {}

  // `key` is where the user defaults hold the folder for one kind of panel.
  std::string start(std::string_view key) const;
  void remember(std::string_view key, const std::string& chosenFile);

 private:
  UserDefaults& defaults_;
  const Directories& directories_;
};

} // namespace ondrel::platform::windows
