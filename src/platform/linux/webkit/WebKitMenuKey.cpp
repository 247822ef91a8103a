#include "platform/linux/webkit/WebKitMenuKey.h"

#include "platform/linux/glib/AsyncResult.h"
#include "platform/linux/text/ResourceText.h"
#include "platform/linux/text/SafeText.h"

#include <fmt/format.h>

#include <cmath>

namespace ondrel::platform::webkit {

namespace {

constexpr const char* world = "ondrel-menu";
constexpr const char* script = "/org/velmora/Ondrel/scripts/menuFocus.js";

glib::Ref<JSCValue> member(JSCValue* object, const char* name) {
  return glib::adopt(jsc_value_object_get_property(object, name));
}

bool flag(JSCValue* object, const char* name) {
  return jsc_value_to_boolean(member(object, name).get()) != FALSE;
}

int pixels(JSCValue* object, const char* name, double zoom) {
  return static_cast<int>(std::lround(jsc_value_to_double(member(object, name).get()) * zoom));
}

// Of the rows that the engine does; null for the others.
const char* editingCommand(MenuAction action) {
  switch (action) {
  case MenuAction::cut:
    return WEBKIT_EDITING_COMMAND_CUT;
  case MenuAction::copy:
    return WEBKIT_EDITING_COMMAND_COPY;
  case MenuAction::paste:
    return WEBKIT_EDITING_COMMAND_PASTE;
  case MenuAction::pasteAsPlainText:
    return WEBKIT_EDITING_COMMAND_PASTE_AS_PLAIN_TEXT;
  case MenuAction::selectAll:
    return WEBKIT_EDITING_COMMAND_SELECT_ALL;
  default:
    return nullptr;
  }
}

bool needsEngine(MenuAction action) {
  return action == MenuAction::spelling || action == MenuAction::insertEmoji ||
         action == MenuAction::saveImage || action == MenuAction::copyImage;
}

} // namespace

WebKitMenuKey::WebKitMenuKey(WebKitWebView* view, GtkWidget* container, Handlers handlers)
    : view_(view), container_(glib::share(container)), handlers_(std::move(handlers)),
      keys_(glib::adopt(gtk_shortcut_controller_new())) {
  gtk_event_controller_set_propagation_phase(keys_.get(), GTK_PHASE_CAPTURE);
  auto* action = gtk_callback_action_new(
      [](GtkWidget*, GVariant*, gpointer data) -> gboolean {
        auto* self = static_cast<WebKitMenuKey*>(data);
        self->scope_.spawn(self->ask());
        return TRUE;
      },
      this, nullptr);
  gtk_shortcut_controller_add_shortcut(
      GTK_SHORTCUT_CONTROLLER(keys_.get()),
      gtk_shortcut_new(gtk_shortcut_trigger_parse_string("Menu|<Shift>F10"), action));
  gtk_widget_add_controller(container, GTK_EVENT_CONTROLLER(g_object_ref(keys_.get())));
}

WebKitMenuKey::~WebKitMenuKey() {
  close();
  gtk_widget_remove_controller(container_.get(), keys_.get());
}

async::Task<void> WebKitMenuKey::ask() {
  const auto view = glib::share(view_);
  const auto source = "return " + text::resourceText(script).value_or("null");
  auto [pending, future] = glib::startAsync();
  webkit_web_view_call_async_javascript_function(view.get(), source.c_str(), -1, nullptr, world, nullptr,
                                                 pending.cancellable, glib::PendingCall::callback,
                                                 pending.userData);
  const auto result = co_await std::move(future);
  if (!result)
    co_return;
  glib::Error error;
  const auto focus = glib::adopt(
      webkit_web_view_call_async_javascript_function_finish(view.get(), result->get(), error.out()));
  if (!focus || !jsc_value_is_object(focus.get()))
    co_return;
  ContextHit hit;
  hit.linkURL = text::validUtf8(glib::CString(jsc_value_to_string(member(focus.get(), "link").get())).get());
  hit.isSelection = flag(focus.get(), "isSelection");
  hit.isEditable = flag(focus.get(), "isEditable");
  const auto zoom = webkit_web_view_get_zoom_level(view.get());
  show(hit, {pixels(focus.get(), "x", zoom), pixels(focus.get(), "y", zoom), 1, 1});
}

void WebKitMenuKey::show(const ContextHit& hit, GdkRectangle place) {
  close();
  const auto group = glib::adopt(g_simple_action_group_new());
  const auto menu = glib::adopt(g_menu_new());
  for (const auto& rows : handlers_.rows(hit)) {
    const auto section = glib::adopt(g_menu_new());
    for (const auto& row : rows) {
      if (needsEngine(row.action))
        continue;
      const auto name = fmt::format("row-{}", chosen_.size());
      const auto action = glib::adopt(g_simple_action_new(name.c_str(), nullptr));
      const bool takesSelection = row.action == MenuAction::cut || row.action == MenuAction::copy;
      g_simple_action_set_enabled(action.get(), !takesSelection || hit.isSelection);
      chosen_.push_back(glib::connect<void(GSimpleAction*, GVariant*)>(
          action.get(), "activate", [this, row, hit](GSimpleAction*, GVariant*) { perform(row, hit); }));
      g_action_map_add_action(G_ACTION_MAP(group.get()), G_ACTION(action.get()));
      g_menu_append(section.get(), row.title.c_str(), ("page-menu." + name).c_str());
    }
    if (g_menu_model_get_n_items(G_MENU_MODEL(section.get())) > 0)
      g_menu_append_section(menu.get(), nullptr, G_MENU_MODEL(section.get()));
  }
  if (chosen_.empty())
    return;
  popover_ = gtk_popover_menu_new_from_model(G_MENU_MODEL(menu.get()));
  gtk_widget_insert_action_group(popover_, "page-menu", G_ACTION_GROUP(group.get()));
  gtk_widget_set_parent(popover_, container_.get());
  gtk_widget_set_halign(popover_, GTK_ALIGN_START);
  gtk_popover_set_has_arrow(GTK_POPOVER(popover_), FALSE);
  gtk_popover_set_pointing_to(GTK_POPOVER(popover_), &place);
  gtk_popover_popup(GTK_POPOVER(popover_));
}

void WebKitMenuKey::perform(const MenuRow& row, const ContextHit& hit) {
  const auto* command = editingCommand(row.action);
  gtk_widget_grab_focus(GTK_WIDGET(view_));
  if (!command)
    handlers_.choose(row, hit);
  else if (row.action != MenuAction::paste || !handlers_.pasteFiles())
    webkit_web_view_execute_editing_command(view_, command);
}

void WebKitMenuKey::close() {
  chosen_.clear();
  if (auto* popover = std::exchange(popover_, nullptr))
    gtk_widget_unparent(popover);
}

} // namespace ondrel::platform::webkit
