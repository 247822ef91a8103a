#pragma once

#include "async/Scope.h"
#include "async/Task.h"
#include "base/Event.h"

#include <optional>
#include <string>
#include <string_view>

namespace ondrel::jmap {
class MailQueries;
}

namespace ondrel::settings {
class AppSettings;
}

namespace ondrel::highlights {

// What the section of the settings window on labelling shows and does; a view only draws it. It asks the
// account whether it has labels or folders, which decides the words and nothing else. Main thread only.
class HighlightSettingsModel {
 public:
  // Both outlive it.
  HighlightSettingsModel(settings::AppSettings& settings, jmap::MailQueries& mail);

  bool enabled() const;
  void setEnabled(bool enabled);

  // As it is stored: an empty name counts as the default one and is shown as it is.
  std::string tagName() const;
  void setTagName(std::string name);
  // What an empty name counts as.
  static std::string_view namePrompt();

  // None until the answer has come, and where it fails.
  std::optional<bool> inLabelsMode() const { return inLabelsMode_; }
  std::string_view enableText() const;
  std::string_view nameText() const;
  std::string_view footnote() const;

  base::Event<> changed; // anything of the above

 private:
  async::Task<void> fetchMode(jmap::MailQueries* mail);
  bool hasFolders() const { return inLabelsMode_ == false; }

  settings::AppSettings& settings_;
  std::optional<bool> inLabelsMode_;
  base::Subscription settingChanges_;
  async::Scope scope_;
};

} // namespace ondrel::highlights
