#include "integrations/SpellingSettings.h"

#include "base/Text.h"
#include "platform/UserDefaults.h"
#include "platform/desktop/SpellChecker.h"
#include "settings/AppSettings.h"

#include <algorithm>
#include <ranges>
#include <set>

namespace ondrel::integrations {

using platform::SpellingDictionary;
using Dictionaries = std::vector<SpellingDictionary>;

namespace {

constexpr std::string_view fallbackLanguage = "en";

// "de_AT.UTF-8@euro" without what says nothing about the language.
std::string_view withoutEncoding(std::string_view name) {
  return name.substr(0, name.find_first_of(".@"));
}

std::string_view languageOf(std::string_view tag) {
  return tag.substr(0, tag.find_first_of("_-"));
}

// The dictionary for a name of a language with or without a country; null for none.
const SpellingDictionary* dictionaryFor(std::string_view name, const Dictionaries& dictionaries) {
  const auto exact = std::ranges::find(dictionaries, name, &SpellingDictionary::tag);
  if (exact != dictionaries.end())
    return &*exact;
  if (languageOf(name) != name)
    return nullptr;
  // "de_DE" before "de_CH", and "en_US" before "en_AU".
  const auto isMain = [name](const std::string& tag) {
    return base::lowercasedAscii(tag) == std::string(name) + "_" + std::string(name) || tag == "en_US";
  };
  const SpellingDictionary* found = nullptr;
  for (const auto& dictionary : dictionaries)
    if (languageOf(dictionary.tag) == name && (!found || isMain(dictionary.tag)))
      found = &dictionary;
  return found;
}

std::vector<std::string> words(const std::string& text) {
  std::vector<std::string> result;
  for (const auto part : std::views::split(text, ' '))
    if (!part.empty())
      result.emplace_back(part.begin(), part.end());
  return result;
}

} // namespace

std::vector<std::string> dictionariesFor(const std::vector<std::string>& userLanguages,
                                         const Dictionaries& dictionaries) {
  std::vector<std::string> result;
  std::set<std::string, std::less<>> known; // languages that have theirs
  bool hasLanguage = false;
  const auto add = [&](std::string_view name) {
    const auto* dictionary = dictionaryFor(name, dictionaries);
    if (dictionary && known.emplace(languageOf(name)).second)
      result.push_back(dictionary->tag);
  };
  for (const auto& name : userLanguages) {
    const auto language = withoutEncoding(name);
    if (language == "C" || language == "POSIX" || language.empty())
      continue;
    hasLanguage = true;
    add(language);
  }
  if (!hasLanguage)
    add(fallbackLanguage);
  return result;
}

SpellingSettings::SpellingSettings(settings::AppSettings& settings, platform::SpellChecker& checker)
    : settings_(settings), checker_(checker),
      changes_(settings.defaults().changed.subscribe([this](const std::string& key) {
        if (key == settings::keys::checkSpelling.name || key == settings::keys::spellingLanguages)
          apply();
      })) {
  apply();
}

Dictionaries SpellingSettings::dictionaries() const {
  return checker_.dictionaries();
}

std::vector<std::string> SpellingSettings::languages() const {
  const auto installed = checker_.dictionaries();
  const auto chosen = settings_.defaults().string(settings::keys::spellingLanguages);
  if (!chosen)
    return dictionariesFor(checker_.userLanguages(), installed);
  auto result = words(*chosen);
  std::erase_if(result, [&installed](const std::string& tag) {
    return std::ranges::find(installed, tag, &SpellingDictionary::tag) == installed.end();
  });
  return result;
}

void SpellingSettings::setChecked(const std::string& tag, bool isChecked) {
  auto tags = languages();
  std::erase(tags, tag);
  if (isChecked)
    tags.push_back(tag);
  std::string text;
  for (const auto& each : tags)
    text += (text.empty() ? "" : " ") + each;
  settings_.defaults().set(settings::keys::spellingLanguages, text);
}

void SpellingSettings::apply() {
  checker_.check(settings_.get(settings::keys::checkSpelling) ? languages() : std::vector<std::string>());
  changed.emit();
}

} // namespace ondrel::integrations
