#include "platform/linux/webkit/WebKitMenu.h"

#include "platform/linux/text/SafeText.h"

#include <fmt/format.h>

#include <algorithm>
#include <optional>

namespace ondrel::platform::webkit {

namespace {

using Item = glib::Ref<WebKitContextMenuItem>;
using Items = std::vector<Item>;

std::string textFrom(const char* text) {
  return text ? text::validUtf8(text) : std::string();
}

// Of the rows that the engine does.
std::optional<WebKitContextMenuAction> stockAction(MenuAction action) {
  switch (action) {
  case MenuAction::saveImage:
    return WEBKIT_CONTEXT_MENU_ACTION_DOWNLOAD_IMAGE_TO_DISK;
  case MenuAction::copyImage:
    return WEBKIT_CONTEXT_MENU_ACTION_COPY_IMAGE_TO_CLIPBOARD;
  case MenuAction::cut:
    return WEBKIT_CONTEXT_MENU_ACTION_CUT;
  case MenuAction::copy:
    return WEBKIT_CONTEXT_MENU_ACTION_COPY;
  case MenuAction::paste:
    return WEBKIT_CONTEXT_MENU_ACTION_PASTE;
  case MenuAction::pasteAsPlainText:
    return WEBKIT_CONTEXT_MENU_ACTION_PASTE_AS_PLAIN_TEXT;
  case MenuAction::selectAll:
    return WEBKIT_CONTEXT_MENU_ACTION_SELECT_ALL;
  case MenuAction::insertEmoji:
    return WEBKIT_CONTEXT_MENU_ACTION_INSERT_EMOJI;
  default:
    return std::nullopt;
  }
}

// The engine has dozens, the best first.
constexpr int mostGuesses = 6;

bool isSpelling(const Item& item) {
  switch (webkit_context_menu_item_get_stock_action(item.get())) {
  case WEBKIT_CONTEXT_MENU_ACTION_SPELLING_GUESS:
  case WEBKIT_CONTEXT_MENU_ACTION_NO_GUESSES_FOUND:
  case WEBKIT_CONTEXT_MENU_ACTION_IGNORE_SPELLING:
  case WEBKIT_CONTEXT_MENU_ACTION_LEARN_SPELLING:
  case WEBKIT_CONTEXT_MENU_ACTION_IGNORE_GRAMMAR:
    return true;
  default:
    return false;
  }
}

// What the engine offers, taken out of the menu.
Items takeItems(WebKitContextMenu* menu) {
  Items items;
  for (guint i = 0; i < webkit_context_menu_get_n_items(menu); ++i)
    items.push_back(glib::share(webkit_context_menu_get_item_at_position(menu, i)));
  webkit_context_menu_remove_all(menu);
  return items;
}

Items spellingItems(const Items& offered) {
  Items items;
  int guesses = 0;
  for (const auto& item : offered) {
    const bool isGuess =
        webkit_context_menu_item_get_stock_action(item.get()) == WEBKIT_CONTEXT_MENU_ACTION_SPELLING_GUESS;
    if (isSpelling(item) && (!isGuess || ++guesses <= mostGuesses))
      items.push_back(item);
  }
  return items;
}

// With our title, and as able to be chosen as the engine's own; null when the engine doesn't offer it.
Item titled(const Items& offered, WebKitContextMenuAction action, const std::string& title) {
  const auto found = std::ranges::find_if(offered, [action](const Item& item) {
    return webkit_context_menu_item_get_stock_action(item.get()) == action;
  });
  if (found == offered.end())
    return nullptr;
  auto item = glib::share(webkit_context_menu_item_new_from_stock_action_with_label(action, title.c_str()));
  auto* model = webkit_context_menu_item_get_gaction(found->get());
  auto* ours = webkit_context_menu_item_get_gaction(item.get());
  if (model && G_IS_SIMPLE_ACTION(ours))
    g_simple_action_set_enabled(G_SIMPLE_ACTION(ours), g_action_get_enabled(model));
  return item;
}

} // namespace

ContextHit contextHitFrom(WebKitHitTestResult* hit) {
  ContextHit result;
  if (webkit_hit_test_result_context_is_link(hit))
    result.linkURL = textFrom(webkit_hit_test_result_get_link_uri(hit));
  if (webkit_hit_test_result_context_is_image(hit))
    result.imageURL = textFrom(webkit_hit_test_result_get_image_uri(hit));
  result.isSelection = webkit_hit_test_result_context_is_selection(hit) != FALSE;
  result.isEditable = webkit_hit_test_result_context_is_editable(hit) != FALSE;
  return result;
}

Item WebKitMenu::own(const MenuRow& row, const Choose& choose) {
  const auto name = fmt::format("ondrel-{}", chosen_.size());
  const auto action = glib::adopt(g_simple_action_new(name.c_str(), nullptr));
  chosen_.push_back(glib::connect<void(GSimpleAction*, GVariant*)>(
      action.get(), "activate", [row, choose](GSimpleAction*, GVariant*) { choose(row); }));
  return glib::share(
      webkit_context_menu_item_new_from_gaction(G_ACTION(action.get()), row.title.c_str(), nullptr));
}

// The engine ignores and learns what is selected, and a click of the right button only puts the caret into
// the word: there its rows could never be chosen.
void WebKitMenu::takeWordAtCaret(const Items& items) {
  for (const auto& item : items) {
    const auto kind = webkit_context_menu_item_get_stock_action(item.get());
    auto* action = webkit_context_menu_item_get_gaction(item.get());
    if ((kind != WEBKIT_CONTEXT_MENU_ACTION_IGNORE_SPELLING &&
         kind != WEBKIT_CONTEXT_MENU_ACTION_LEARN_SPELLING) ||
        !G_IS_SIMPLE_ACTION(action) || g_action_get_enabled(action))
      continue;
    g_simple_action_set_enabled(G_SIMPLE_ACTION(action), TRUE);
    // Ahead of the engine's own handler, and so the page selects the word before it is asked for it.
    chosen_.push_back(
        glib::connect<void(GSimpleAction*, GVariant*)>(action, "activate", [this](GSimpleAction*, GVariant*) {
          webkit_web_view_execute_editing_command(view_, "SelectWord");
        }));
  }
}

bool WebKitMenu::fill(WebKitContextMenu* menu, const ContextMenu& rows, const Choose& choose) {
  chosen_.clear();
  const auto offered = takeItems(menu);
  for (const auto& group : rows) {
    Items items;
    for (const auto& row : group) {
      if (row.action == MenuAction::spelling)
        takeWordAtCaret(items = spellingItems(offered));
      else if (const auto action = stockAction(row.action))
        items.push_back(titled(offered, *action, row.title));
      else
        items.push_back(own(row, choose));
    }
    std::erase(items, nullptr);
    if (!items.empty() && webkit_context_menu_get_n_items(menu) > 0)
      webkit_context_menu_append(menu, webkit_context_menu_item_new_separator());
    for (const auto& item : items)
      webkit_context_menu_append(menu, item.get());
  }
  return webkit_context_menu_get_n_items(menu) > 0;
}

} // namespace ondrel::platform::webkit
