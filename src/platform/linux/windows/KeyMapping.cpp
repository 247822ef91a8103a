#include "platform/linux/windows/KeyMapping.h"

#include "platform/linux/glib/Ref.h"

#include <array>
#include <span>

namespace ondrel::platform::windows {

namespace {

bool isTabKey(guint keyval) {
  return keyval == GDK_KEY_Tab || keyval == GDK_KEY_ISO_Left_Tab || keyval == GDK_KEY_KP_Tab;
}

std::string typed(guint keyval) {
  const gunichar character = gdk_keyval_to_unicode(keyval);
  if (character < 0x20 || character == 0x7F)
    return {};
  std::array<char, 6> bytes{};
  return {bytes.data(), static_cast<std::size_t>(g_unichar_to_utf8(character, bytes.data()))};
}

bool isAscii(const std::string& character) {
  return character.size() == 1 && static_cast<unsigned char>(character[0]) < 0x80;
}

bool isDigit(const std::string& character) {
  return character.size() == 1 && character[0] >= '0' && character[0] <= '9';
}

// What a shortcut means by the key.
std::string shortcutCharacter(const std::string& character, bool shift,
                              const std::vector<KeySymbol>& symbols) {
  if (!isDigit(character) && !shift)
    for (const auto& symbol : symbols)
      if (symbol.level <= 1 && isDigit(typed(symbol.value)))
        return typed(symbol.value);
  if (isAscii(character))
    return character;
  for (const auto& symbol : symbols)
    if (symbol.level == (shift ? 1 : 0) && isAscii(typed(symbol.value)))
      return typed(symbol.value);
  return character;
}

} // namespace

Modifiers modifiersFrom(GdkModifierType state, bool isTab) {
  Modifiers modifiers;
  if (state & GDK_SHIFT_MASK)
    modifiers.flags |= Modifiers::shift;
  if (state & GDK_ALT_MASK)
    modifiers.flags |= Modifiers::option;
  if (state & GDK_CONTROL_MASK)
    modifiers.flags |= isTab ? Modifiers::control : Modifiers::command;
  return modifiers;
}

KeyEvent keyEventFrom(guint keyval, GdkModifierType state, const std::vector<KeySymbol>& symbols) {
  KeyEvent event;
  const bool isTab = isTabKey(keyval);
  event.modifiers = modifiersFrom(state, isTab);
  if (isTab) {
    event.isTab = true;
    event.characters = event.charactersIgnoringModifiers = "\t";
    return event;
  }
  event.characters = typed(keyval);
  const bool shortcut = event.modifiers.contains(Modifiers::command | Modifiers::option);
  if (shortcut && !event.characters.empty())
    event.characters =
        shortcutCharacter(event.characters, event.modifiers.contains(Modifiers::shift), symbols);
  event.charactersIgnoringModifiers = event.characters;
  return event;
}

std::vector<KeySymbol> symbolsOf(guint keycode) {
  std::vector<KeySymbol> symbols;
  GdkKeymapKey* keys = nullptr;
  guint* values = nullptr;
  int count = 0;
  auto* display = gdk_display_get_default();
  if (display && gdk_display_map_keycode(display, keycode, &keys, &values, &count)) {
    for (int i = 0; i < count; ++i)
      symbols.push_back({keys[i].group, keys[i].level, values[i]});
    g_free(keys);
    g_free(values);
  }
  return symbols;
}

} // namespace ondrel::platform::windows
