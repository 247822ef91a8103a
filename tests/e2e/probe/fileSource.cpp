// A window of another program, as wide as a hand: the files of its arguments can be dragged out of it, and
// are on the clipboard. Says when a drag has begun and whether what it is over wants it. With "--picture" in
// front, the first one's picture is on the clipboard instead.
#include "platform/linux/glib/Connection.h"
#include "platform/linux/glib/Ref.h"

#include <gtk/gtk.h>

#include <string_view>

namespace {

GdkFileList* listOf(char** paths) {
  GSList* files = nullptr;
  for (; *paths; ++paths)
    files = g_slist_append(files, g_file_new_for_path(*paths));
  auto* list = gdk_file_list_new_from_list(files);
  g_slist_free_full(files, g_object_unref);
  return list;
}

} // namespace

int main(int, char** arguments) {
  gtk_init();
  const bool picture = std::string_view(arguments[1]) == "--picture";
  auto** paths = arguments + (picture ? 2 : 1);
  auto* window = gtk_window_new();
  gtk_window_set_title(GTK_WINDOW(window), "File Source");
  gtk_window_set_default_size(GTK_WINDOW(window), 100, 100);
  auto* label = gtk_label_new("Files");
  gtk_widget_set_vexpand(label, TRUE);
  auto* source = gtk_drag_source_new();
  const auto prepared = ondrel::glib::connect<GdkContentProvider*(GtkDragSource*, double, double)>(
      source, "prepare", [paths](GtkDragSource*, double, double) {
        GValue value = G_VALUE_INIT;
        g_value_init(&value, GDK_TYPE_FILE_LIST);
        g_value_take_boxed(&value, listOf(paths));
        auto* provider = gdk_content_provider_new_for_value(&value);
        g_value_unset(&value);
        return provider;
      });
  ondrel::glib::Connection answered;
  const auto begun = ondrel::glib::connect<void(GtkDragSource*, GdkDrag*)>(
      source, "drag-begin", [&answered](GtkDragSource*, GdkDrag* drag) {
        g_print("dragging\n");
        answered = ondrel::glib::connect<void(GdkDrag*, GParamSpec*)>(
            drag, "notify::selected-action", [](GdkDrag* changed, GParamSpec*) {
              g_print(gdk_drag_get_selected_action(changed) ? "wanted\n" : "unwanted\n");
            });
      });
  gtk_widget_add_controller(label, GTK_EVENT_CONTROLLER(source));
  gtk_window_set_child(GTK_WINDOW(window), label);
  gtk_window_present(GTK_WINDOW(window));

  auto* clipboard = gtk_widget_get_clipboard(window);
  if (picture) {
    const auto texture = ondrel::glib::adopt(gdk_texture_new_from_filename(paths[0], nullptr));
    gdk_clipboard_set_texture(clipboard, texture.get());
  } else {
    GValue value = G_VALUE_INIT;
    g_value_init(&value, GDK_TYPE_FILE_LIST);
    g_value_take_boxed(&value, listOf(paths));
    gdk_clipboard_set_value(clipboard, &value);
    g_value_unset(&value);
  }
  gdk_display_sync(gtk_widget_get_display(window)); // who hears of it finds the clipboard taken
  g_print("ready\n");
  while (true)
    g_main_context_iteration(nullptr, TRUE);
}
