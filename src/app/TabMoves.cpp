#include "app/TabMoves.h"

#include "platform/Window.h"

#include <algorithm>

namespace ondrel::app {

void moveTab(platform::Window& window, int step) {
  const auto group = window.tabGroup();
  if (!group)
    return;
  const auto tabs = group->windows();
  const auto self = std::ranges::find(tabs, &window, &std::shared_ptr<platform::Window>::get);
  if (self == tabs.end())
    return;
  // It changes places with its neighbour.
  if (step > 0 && self + 1 != tabs.end())
    (*(self + 1))->addTabbedWindow(*self);
  else if (step < 0 && self != tabs.begin())
    (*self)->addTabbedWindow(*(self - 1));
}

} // namespace ondrel::app
