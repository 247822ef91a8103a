#pragma once

#include <string>
#include <vector>

namespace ondrel::platform {

// What is in a page where its user asks for a menu. Addresses are absolute; empty for none.
struct ContextHit {
  std::string linkURL{};
  std::string imageURL{};
  bool isSelection = false; // selected text
  bool isEditable = false;  // a field, or the text of a letter

  bool operator==(const ContextHit&) const = default;
};

// What a row of that menu does.
enum class MenuAction {
  // The program's, which hears of them (WebViewDelegate::didChoose).
  openInTab,
  openInBackgroundTab,
  openInWindow,
  openInBrowser,
  openElsewhere, // in the desktop's program for such addresses, or in a letter
  highlight,
  goBack,
  goForward,
  reload,
  // The web view's own. Those for editing are shown where the engine offers them, and can be chosen when they
  // can be done.
  copyText, // the text of the row
  saveLink,
  saveImage,
  copyImage,
  spelling, // all that the engine suggests for a word, with titles of its own
  cut,
  copy,
  paste,
  pasteAsPlainText,
  selectAll,
  insertEmoji,
};

struct MenuRow {
  MenuAction action{};
  std::string title{};
  std::string text{}; // what is copied

  bool operator==(const MenuRow&) const = default;
};

// Groups of rows, with a line between them.
using ContextMenu = std::vector<std::vector<MenuRow>>;

} // namespace ondrel::platform
