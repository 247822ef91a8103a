#include "shortcuts/KeyCombinationText.h"

#include "base/Text.h"

#include <algorithm>
#include <array>
#include <cctype>

namespace ondrel::shortcuts {

using platform::KeyCombination;

namespace {

constexpr std::size_t longestKeyName = 40;

struct Modifier {
  std::string_view stored;
  std::string_view shown;
  bool KeyCombination::* held;
};
// In the order in which the toolkit names them in menus.
constexpr std::array modifiers = {
    Modifier{"SHIFT", "Shift", &KeyCombination::shift}, Modifier{"CTRL", "Ctrl", &KeyCombination::control},
    Modifier{"ALT", "Alt", &KeyCombination::alt}, Modifier{"LOGO", "Super", &KeyCombination::super}};

std::string joined(const KeyCombination& keys, std::string_view Modifier::* name, std::string_view key) {
  std::string result;
  for (const auto& modifier : modifiers)
    if (keys.*modifier.held)
      (result += modifier.*name) += '+';
  return result += key;
}

bool isWordCharacter(char c) {
  return std::isalnum(static_cast<unsigned char>(c)) || c == '_';
}

bool isFunctionKey(std::string_view key) {
  return key.starts_with('F') && base::parsedInteger(key.substr(1)).has_value();
}

} // namespace

std::string storedText(const KeyCombination& keys) {
  return joined(keys, &Modifier::stored, keys.key);
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
  return joined(keys, &Modifier::shown, key);
}

bool mayBeReserved(const KeyCombination& keys) {
  return isFunctionKey(keys.key) || keys.key.starts_with("XF86") || keys.control || keys.alt || keys.super;
}

} // namespace ondrel::shortcuts
