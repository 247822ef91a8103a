#include "shortcuts/KeyCombinationText.h"

#include "base/Text.h"
#include "base/Translation.h"

#include <algorithm>
#include <array>
#include <cctype>

namespace ondrel::shortcuts {

using platform::KeyCombination;

namespace {

constexpr std::size_t longestKeyName = 40;

struct Modifier {
  std::string_view stored;
  const char* shown;
  bool KeyCombination::* held;
};
// In the order in which the toolkit names them in menus.
constexpr std::array modifiers = {
    // TRANSLATORS: a key, as it is labelled on keyboards
    Modifier{"SHIFT", base::trMark("Shift"), &KeyCombination::shift},
    // TRANSLATORS: a key, as it is labelled on keyboards
    Modifier{"CTRL", base::trMark("Ctrl"), &KeyCombination::control},
    // TRANSLATORS: a key, as it is labelled on keyboards
    Modifier{"ALT", base::trMark("Alt"), &KeyCombination::alt},
    // TRANSLATORS: a key, as it is labelled on keyboards
    Modifier{"LOGO", base::trMark("Super"), &KeyCombination::super}};

bool isWordCharacter(char c) {
  return std::isalnum(static_cast<unsigned char>(c)) || c == '_';
}

bool isFunctionKey(std::string_view key) {
  return key.starts_with('F') && base::parsedInteger(key.substr(1)).has_value();
}

} // namespace

std::string storedText(const KeyCombination& keys) {
  std::string result;
  for (const auto& modifier : modifiers)
    if (keys.*modifier.held)
      (result += modifier.stored) += '+';
  return result += keys.key;
}

std::optional<KeyCombination> parseKeyCombination(std::string_view text) {
  KeyCombination result;
  for (auto plus = text.find('+'); plus != std::string_view::npos; plus = text.find('+')) {
    const auto modifier = std::ranges::find(modifiers, text.substr(0, plus), &Modifier::stored);
    if (modifier == modifiers.end())
      return std::nullopt;
    result.*modifier->held = true;
    text.remove_prefix(plus + 1);
  }
  if (text.empty() || text.size() > longestKeyName || !std::ranges::all_of(text, isWordCharacter))
    return std::nullopt;
  result.key = text;
  return result;
}

std::string displayText(const KeyCombination& keys) {
  auto key = keys.key;
  std::ranges::replace(key, '_', ' ');
  if (!key.empty())
    key.front() = static_cast<char>(std::toupper(static_cast<unsigned char>(key.front())));
  std::string result;
  for (const auto& modifier : modifiers)
    if (keys.*modifier.held)
      (result += base::tr(modifier.shown)) += '+';
  return result += key;
}

bool mayBeReserved(const KeyCombination& keys) {
  return isFunctionKey(keys.key) || keys.key.starts_with("XF86") || keys.control || keys.alt || keys.super;
}

} // namespace ondrel::shortcuts
