#pragma once

#include "base/Event.h"

#include <string>
#include <vector>

namespace ondrel::platform {
class SpellChecker;
struct SpellingDictionary;
} // namespace ondrel::platform

namespace ondrel::settings {
class AppSettings;
}

namespace ondrel::integrations {

// Of the dictionaries those of the user's languages, in that order: the one of a language's country where
// there is one. Who has no language reads the program in English, and gets that.
std::vector<std::string> dictionariesFor(const std::vector<std::string>& userLanguages,
                                         const std::vector<platform::SpellingDictionary>& dictionaries);

// In which languages the spelling is checked: the user's, until they choose others. Keeps the checker in line
// with the settings. Main thread only.
class SpellingSettings {
 public:
  // Both outlive it.
  SpellingSettings(settings::AppSettings& settings, platform::SpellChecker& checker);

  std::vector<platform::SpellingDictionary> dictionaries() const;
  // Of those that are installed, also while checking is off.
  std::vector<std::string> languages() const;
  void setChecked(const std::string& tag, bool isChecked);
  // Other languages, or none. Whoever chose them.
  base::Event<> changed;

 private:
  void apply();

  settings::AppSettings& settings_;
  platform::SpellChecker& checker_;
  base::Subscription changes_;
};

} // namespace ondrel::integrations
