#include "platform/linux/pagefiles/WebKitFilePaste.h"

#include "base/Translation.h"
#include "platform/linux/glib/AsyncResult.h"
#include "platform/linux/glib/ReadUpTo.h"
#include "platform/linux/pagefiles/FileList.h"

#include <array>
#include <optional>

namespace ondrel::platform::pagefiles {

namespace {

using glib::adopt;
using glib::Ref;

constexpr std::array pictureTypes = {"image/png", "image/jpeg", "image/webp",
                                     "image/gif", "image/tiff", "image/bmp"};

// The type of a picture that stands for itself: cells of a table, say, come as text and as their picture.
std::optional<std::string> pictureIn(GdkContentFormats* formats) {
  if (!gdk_content_formats_contain_gtype(formats, G_TYPE_STRING))
    for (const auto* type : pictureTypes)
      if (gdk_content_formats_contain_mime_type(formats, type))
        return type;
  return std::nullopt;
}

} // namespace

WebKitFilePaste::WebKitFilePaste(WebKitWebView* view, GtkWidget* container, Handlers handlers)
    : view_(view), container_(glib::share(container)), handlers_(std::move(handlers)),
      keys_(adopt(gtk_shortcut_controller_new())),
      menuAction_(adopt(g_simple_action_new("paste-files", nullptr))) {
  gtk_event_controller_set_propagation_phase(keys_.get(), GTK_PHASE_CAPTURE);
  auto* trigger = gtk_shortcut_trigger_parse_string("<Control>v|<Shift>Insert");
  auto* action = gtk_callback_action_new(
      [](GtkWidget*, GVariant*, gpointer self) -> gboolean {
        return static_cast<WebKitFilePaste*>(self)->start();
      },
      this, nullptr);
  gtk_shortcut_controller_add_shortcut(GTK_SHORTCUT_CONTROLLER(keys_.get()),
                                       gtk_shortcut_new(trigger, action));
  gtk_widget_add_controller(container, GTK_EVENT_CONTROLLER(g_object_ref(keys_.get())));
  menuActivated_ = glib::connect<void(GSimpleAction*, GVariant*)>(
      menuAction_.get(), "activate", [this](GSimpleAction*, GVariant*) {
        if (!start())
          webkit_web_view_execute_editing_command(view_, WEBKIT_EDITING_COMMAND_PASTE);
      });
}

WebKitFilePaste::~WebKitFilePaste() {
  gtk_widget_remove_controller(container_.get(), keys_.get());
}

bool WebKitFilePaste::start() {
  auto* formats = gdk_clipboard_get_formats(gtk_widget_get_clipboard(container_.get()));
  auto picture = pictureIn(formats);
  if (offersFiles(formats))
    scope_.spawn(pasteFiles());
  else if (picture)
    scope_.spawn(pastePicture(std::move(*picture)));
  else
    return false;
  return true;
}

async::Task<void> WebKitFilePaste::pasteFiles() {
  const auto clipboard = glib::share(gtk_widget_get_clipboard(container_.get()));
  auto files = co_await readFiles(clipboard);
  // Those of other machines may be addresses of pages, or of where a copied picture comes from.
  std::erase_if(files, [](const auto& file) { return !g_file_peek_path(file.get()); });
  auto picture = pictureIn(gdk_clipboard_get_formats(clipboard.get()));
  if (!files.empty())
    handlers_.files(std::move(files));
  else if (picture)
    co_await pastePicture(std::move(*picture));
  else
    webkit_web_view_execute_editing_command(view_, WEBKIT_EDITING_COMMAND_PASTE);
}

async::Task<void> WebKitFilePaste::pastePicture(std::string type) {
  const auto clipboard = glib::share(gtk_widget_get_clipboard(container_.get()));
  const char* types[] = {type.c_str(), nullptr};
  auto [pending, future] = glib::startAsync();
  gdk_clipboard_read_async(clipboard.get(), types, G_PRIORITY_DEFAULT, pending.cancellable,
                           glib::PendingCall::callback, pending.userData);
  const auto result = co_await std::move(future);
  if (!result)
    co_return;
  glib::Error error;
  auto stream = adopt(gdk_clipboard_read_finish(clipboard.get(), result->get(), nullptr, error.out()));
  std::optional<std::string> content;
  if (stream)
    content = co_await glib::readUpTo(largestPastedPicture, std::move(stream));
  if (!content || content->empty())
    handlers_.failed(base::tr("The picture on the clipboard can't be read."));
  else if (content->size() > largestPastedPicture)
    handlers_.failed(base::tr("The picture on the clipboard is too large. Save it as a file and add that."));
  else
    handlers_.picture({std::move(type), std::move(*content)});
}

void WebKitFilePaste::takeMenuItem(WebKitContextMenu* menu) {
  auto* formats = gdk_clipboard_get_formats(gtk_widget_get_clipboard(container_.get()));
  if (!offersFiles(formats) && !pictureIn(formats))
    return;
  for (guint i = 0; i < webkit_context_menu_get_n_items(menu); ++i) {
    auto* item = webkit_context_menu_get_item_at_position(menu, i);
    if (webkit_context_menu_item_get_stock_action(item) != WEBKIT_CONTEXT_MENU_ACTION_PASTE)
      continue;
    webkit_context_menu_remove(menu, item);
    webkit_context_menu_insert(
        menu,
        webkit_context_menu_item_new_from_gaction(G_ACTION(menuAction_.get()), base::tr("Paste"), nullptr),
        static_cast<int>(i));
    return;
  }
}

} // namespace ondrel::platform::pagefiles
