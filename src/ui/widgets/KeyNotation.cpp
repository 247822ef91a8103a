#include "ui/widgets/KeyNotation.h"

#include "base/Translation.h"

#include <array>
#include <cctype>
#include <optional>

namespace ondrel::ui {

namespace {

struct Sign {
  std::string_view sign;
  std::string_view name;
};

constexpr std::size_t modifierCount = 4;

// In the order in which the toolkit names them in menus.
const std::array<Sign, modifierCount>& modifiers() {
  static const std::array<Sign, modifierCount> table = {
      Sign{"⇧", base::trIn("key", "Shift")}, Sign{"⌘", base::trIn("key", "Ctrl")},
      Sign{"⌃", base::trIn("key", "Ctrl")}, Sign{"⌥", base::trIn("key", "Alt")}};
  return table;
}

const std::array<Sign, 9>& keys() {
  static const std::array<Sign, 9> table = {
      Sign{"⇥", base::trIn("key", "Tab")},    Sign{"↩", base::trIn("key", "Enter")},
      Sign{"⎋", base::trIn("key", "Esc")},    Sign{"⌫", base::trIn("key", "Backspace")},
      Sign{"⌦", base::trIn("key", "Delete")}, Sign{"←", base::trIn("key", "Left")},
      Sign{"→", base::trIn("key", "Right")},  Sign{"↑", base::trIn("key", "Up")},
      Sign{"↓", base::trIn("key", "Down")}};
  return table;
}

// Without a key after it a sign stands for itself, in the middle of a sentence.
bool isKeyAhead(std::string_view text) {
  return !text.empty() && !std::string_view(" \t\n)").contains(text.front());
}

std::optional<std::size_t> takeModifier(std::string_view& text) {
  for (std::size_t i = 0; i < modifierCount; ++i)
    if (text.starts_with(modifiers()[i].sign)) {
      text.remove_prefix(modifiers()[i].sign.size());
      return i;
    }
  return std::nullopt;
}

// The signs at the start of the text, as far as they are held together, and the name of the key after them.
std::string takeCombination(std::string_view& text) {
  std::array<bool, modifierCount> held{};
  while (const auto modifier = takeModifier(text))
    held[*modifier] = true;
  std::string result;
  for (std::size_t i = 0; i < modifierCount; ++i)
    if (held[i] && !result.contains(modifiers()[i].name))
      (result += result.empty() ? "" : "+") += modifiers()[i].name;
  if (!isKeyAhead(text))
    return result;
  if (text.size() > 1 && text[0] == '-' && std::isalpha(static_cast<unsigned char>(text[1])))
    text.remove_prefix(1); // "⌘-click"
  result += '+';
  for (const auto& key : keys())
    if (text.starts_with(key.sign)) {
      text.remove_prefix(key.sign.size());
      return result += key.name;
    }
  return result;
}

} // namespace

std::string withDesktopKeys(std::string_view text) {
  std::string result;
  while (!text.empty()) {
    auto rest = text;
    if (takeModifier(rest)) {
      result += takeCombination(text);
      continue;
    }
    result += text.front();
    text.remove_prefix(1);
  }
  return result;
}

} // namespace ondrel::ui
