#include "web/page/ContextMenuRows.h"

#include "base/Text.h"
#include "base/Translation.h"
#include "base/Url.h"
#include "web/page/NavigationRules.h"

#include <utility>

namespace ondrel::web {

using platform::ContextHit;
using platform::MenuAction;

namespace {

using Rows = std::vector<platform::MenuRow>;

// A button of the application, or a place in the page that is shown: nothing to open or copy.
bool isPlaceInPage(const std::string& link, const std::string& page) {
  const auto mark = link.find('#');
  return mark != link.npos && link.substr(0, mark) == page.substr(0, page.find('#'));
}

// What stands in "mailto:" before the "?", as people write it. It stays escaped where more would be pasted
// than can be seen: another line, say, which a terminal takes for a command.
std::string emailAddress(std::string_view link) {
  const auto start = link.find(':') + 1;
  const auto escaped = link.substr(start, link.find('?') - start);
  auto address = base::percentDecoded(escaped);
  return base::displayLine(address) == address ? address : std::string(escaped);
}

Rows letterRows(const std::string& link, const MenuFacts& facts) {
  Rows rows;
  if (facts.hasApplication)
    rows.push_back({MenuAction::openElsewhere, base::tr("New Message to This Address")});
  if (auto address = emailAddress(link); !address.empty())
    rows.push_back({MenuAction::copyText, base::tr("Copy Email Address"), std::move(address)});
  return rows;
}

Rows linkRows(const std::string& link, const MenuFacts& facts) {
  const auto url = base::Url::parse(link);
  const bool isPage = url && url->isWeb() && addressUse(link, TargetFrame::main) == AddressUse::stay;
  const bool isForOthers = addressUse(link, TargetFrame::unknown) == AddressUse::handToDesktop;
  if ((!isPage && !isForOthers) || isPlaceInPage(link, facts.pageURL))
    return {};
  if (base::lowercasedAscii(link.substr(0, link.find(':'))) == "mailto")
    return letterRows(link, facts);
  Rows rows;
  if (isForOthers && facts.hasApplication)
    rows.push_back({MenuAction::openElsewhere, base::tr("Open Link")});
  if (isPage && facts.isFile)
    rows.push_back({MenuAction::saveLink, base::tr("Save File As…")});
  if (isPage && !facts.isFile) {
    rows.push_back({MenuAction::openInTab, base::tr("Open Link in New Tab")});
    rows.push_back({MenuAction::openInBackgroundTab, base::tr("Open Link in Background Tab")});
    rows.push_back({MenuAction::openInWindow, base::tr("Open Link in New Window")});
  }
  if (isPage)
    rows.push_back({MenuAction::openInBrowser, base::tr("Open Link in Browser")});
  rows.push_back({MenuAction::copyText, base::tr("Copy Link Address"), link});
  return rows;
}

Rows selectionRows(const MenuFacts& facts) {
  Rows rows = {{MenuAction::copy, base::tr("Copy")}};
  if (facts.canHighlight)
    rows.push_back({MenuAction::highlight, base::tr("Highlight Selection")});
  return rows;
}

Rows pageRows(const MenuFacts& facts) {
  Rows rows;
  if (facts.isWritingLetter) // which they lead away from
    return rows;
  if (facts.canGoBack)
    rows.push_back({MenuAction::goBack, base::tr("Back")});
  if (facts.canGoForward)
    rows.push_back({MenuAction::goForward, base::tr("Forward")});
  rows.push_back({MenuAction::reload, base::tr("Reload")});
  return rows;
}

} // namespace

platform::ContextMenu contextMenuRows(const ContextHit& hit, const MenuFacts& facts) {
  platform::ContextMenu menu;
  const auto add = [&menu](Rows rows) {
    if (!rows.empty())
      menu.push_back(std::move(rows));
  };
  if (hit.isEditable)
    add({{MenuAction::spelling}});
  if (!hit.linkURL.empty())
    add(linkRows(hit.linkURL, facts));
  if (!hit.imageURL.empty())
    add({{MenuAction::saveImage, base::tr("Save Image As…")},
         {MenuAction::copyImage, base::tr("Copy Image")}});
  if (hit.isEditable) {
    add({{MenuAction::cut, base::tr("Cut")},
         {MenuAction::copy, base::tr("Copy")},
         {MenuAction::paste, base::tr("Paste")},
         {MenuAction::pasteAsPlainText, base::tr("Paste as Plain Text")}});
    add({{MenuAction::selectAll, base::tr("Select All")},
         {MenuAction::insertEmoji, base::tr("Insert Emoji")}});
  } else if (hit.isSelection) {
    add(selectionRows(facts));
  }
  if (menu.empty())
    add(pageRows(facts));
  return menu;
}

} // namespace ondrel::web
