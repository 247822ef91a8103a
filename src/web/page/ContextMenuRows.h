#pragma once

#include "platform/ContextMenu.h"

#include <string>

namespace ondrel::web {

// What the menu of a page depends on besides what was hit.
struct MenuFacts {
  std::string pageURL{};
  bool isFile = false;         // the link leads to a file of a message
  bool hasApplication = false; // a program, or this one, opens links of that scheme
  bool canHighlight = false;
  bool canGoBack = false;
  bool canGoForward = false;
  bool isWritingLetter = false;
};

// The rows for what the user has pressed on, nothing that does nothing there; empty for no menu. No row
// searches the web for what is selected: the desktop has no word for which engine its user trusts, and the
// text is their mail.
platform::ContextMenu contextMenuRows(const platform::ContextHit& hit, const MenuFacts& facts);

} // namespace ondrel::web
