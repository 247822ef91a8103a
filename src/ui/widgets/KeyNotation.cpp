#include "ui/widgets/KeyNotation.h"

#include <array>
#include <cctype>
#include <optional>

namespace ondrel::ui {

namespace {

struct Sign {
  std::string_view sign;
  std::string_view name;
};

// In the order in which the toolkit names them in menus.
constexpr std::array modifiers = {Sign{"⇧", "Shift"}, Sign{"⌘", "Ctrl"}, Sign{"⌃", "Ctrl"}, Sign{"⌥", "Alt"}};

constexpr std::array keys = {
    Sign{"⇥", "Tab"},  Sign{"↩", "Enter"}, Sign{"⎋", "Esc"}, Sign{"⌫", "Backspace"}, Sign{"⌦", "Delete"},
    Sign{"←", "Left"}, Sign{"→", "Right"}, Sign{"↑", "Up"},  Sign{"↓", "Down"},
};

// Without a key after it a sign stands for itself, in the middle of a sentence.
bool isKeyAhead(std::string_view text) {
  return !text.empty() && !std::string_view(" \t\n)").contains(text.front());
}

std::optional<std::size_t> takeModifier(std::string_view& text) {
  for (std::size_t i = 0; i < modifiers.size(); ++i)
    if (text.starts_with(modifiers[i].sign)) {
      text.remove_prefix(modifiers[i].sign.size());
      return i;
    }
  return std::nullopt;
}

// The signs at the start of the text, as far as they are held together, and the name of the key after them.
std::string takeCombination(std::string_view& text) {
  std::array<bool, modifiers.size()> held{};
  while (const auto modifier = takeModifier(text))
    held[*modifier] = true;
  std::string result;
  for (std::size_t i = 0; i < modifiers.size(); ++i)
    if (held[i] && !result.contains(modifiers[i].name))
      (result += result.empty() ? "" : "+") += modifiers[i].name;
  if (!isKeyAhead(text))
    return result;
  if (text.size() > 1 && text[0] == '-' && std::isalpha(static_cast<unsigned char>(text[1])))
    text.remove_prefix(1); // "⌘-click"
  result += '+';
  for (const auto& key : keys)
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
