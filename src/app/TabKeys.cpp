#include "app/TabKeys.h"

#include "platform/Application.h"
#include "platform/Window.h"

#include <string>

namespace ondrel::app {

using platform::KeyEvent;
using platform::Modifiers;

namespace {

bool selectTab(const platform::Window* key, const std::string& characters) {
  const auto digit = characters.empty() ? '0' : characters.front();
  const auto group = key && digit >= '1' && digit <= '9' ? key->tabGroup() : nullptr;
  if (!group)
    return false;
  const auto tabs = group->windows();
  const auto position = digit == '9' ? tabs.size() - 1 : static_cast<std::size_t>(digit - '1');
  if (position >= tabs.size())
    return false;
  tabs[position]->present();
  return true;
}

} // namespace

bool takeTabKey(const KeyEvent& event, const std::shared_ptr<platform::Window>& key) {
  const auto& modifiers = event.modifiers;
  if (event.isTab && modifiers.exactly(Modifiers::control)) {
    if (key)
      key->selectNextTab();
    return true;
  }
  if (event.isTab && modifiers.exactly(Modifiers::control | Modifiers::shift)) {
    if (key)
      key->selectPreviousTab();
    return true;
  }
  // Alt is what other browsers of the desktop use.
  if (modifiers.exactly(Modifiers::command) || modifiers.exactly(Modifiers::option))
    return selectTab(key.get(), event.characters);
  if (modifiers.exactly(Modifiers::command | Modifiers::shift))
    selectTab(key.get(), event.characters); // and the menu's item behind the key is looked at as well
  return false;
}

} // namespace ondrel::app
