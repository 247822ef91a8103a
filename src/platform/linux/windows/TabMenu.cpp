#include "platform/linux/windows/TabMenu.h"

#include "base/Translation.h"

namespace ondrel::platform::windows {

namespace {

void moveToNewWindow(AdwTabView* view, AdwTabPage* page) {
  AdwTabView* target = nullptr;
  g_signal_emit_by_name(view, "create-window", &target);
  if (target)
    adw_tab_view_transfer_page(view, page, target, 0);
}

glib::Ref<GMenu> makeMenu() {
  auto menu = glib::adopt(g_menu_new());
  g_menu_append(menu.get(), base::tr("Move to _New Window"), "tab.move-to-new-window");
  const auto closing = glib::adopt(g_menu_new());
  g_menu_append(closing.get(), base::tr("Close _Other Tabs"), "tab.close-others");
  g_menu_append(closing.get(), base::tr("_Close Tab"), "tab.close");
  g_menu_append_section(menu.get(), nullptr, G_MENU_MODEL(closing.get()));
  return menu;
}

void enable(GActionMap* actions, const char* name, bool enabled) {
  g_simple_action_set_enabled(G_SIMPLE_ACTION(g_action_map_lookup_action(actions, name)), enabled);
}

} // namespace

TabMenu::TabMenu(AdwTabView* view, GtkWidget* topLevel, std::function<void(AdwTabPage*)> closeOthers) {
  const auto actions = glib::adopt(g_simple_action_group_new());
  addAction(G_ACTION_MAP(actions.get()), "move-to-new-window",
            [view](AdwTabPage* page) { moveToNewWindow(view, page); });
  addAction(G_ACTION_MAP(actions.get()), "close",
            [view](AdwTabPage* page) { adw_tab_view_close_page(view, page); });
  addAction(G_ACTION_MAP(actions.get()), "close-others", std::move(closeOthers));
  gtk_widget_insert_action_group(topLevel, "tab", G_ACTION_GROUP(actions.get()));
  adw_tab_view_set_menu_model(view, G_MENU_MODEL(makeMenu().get()));

  connections_.push_back(glib::connect<void(AdwTabView*, AdwTabPage*)>(
      view, "setup-menu", [this, actions](AdwTabView* shown, AdwTabPage* page) {
        if (!page)
          return; // the menu has closed: its action may still come
        page_.set(page);
        const bool several = adw_tab_view_get_n_pages(shown) > 1;
        enable(G_ACTION_MAP(actions.get()), "move-to-new-window", several);
        enable(G_ACTION_MAP(actions.get()), "close-others", several);
      }));
}

void TabMenu::addAction(GActionMap* actions, const char* name, std::function<void(AdwTabPage*)> run) {
  const auto action = glib::adopt(g_simple_action_new(name, nullptr));
  connections_.push_back(glib::connect<void(GSimpleAction*, GVariant*)>(
      action.get(), "activate", [this, run = std::move(run)](GSimpleAction*, GVariant*) {
        if (const auto page = page_.lock())
          run(page.get());
      }));
  g_action_map_add_action(actions, G_ACTION(action.get()));
}

} // namespace ondrel::platform::windows
