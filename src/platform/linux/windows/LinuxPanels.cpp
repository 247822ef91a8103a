#include "platform/linux/windows/LinuxPanels.h"

#include "async/Future.h"
#include "base/Log.h"
#include "base/Text.h"
#include "base/Translation.h"
#include "platform/linux/glib/Connection.h"
#include "platform/linux/text/SafeText.h"
#include "platform/linux/windows/TabWindow.h"

#include <adwaita.h>

#include <algorithm>

namespace ondrel::platform::windows {

namespace {

constexpr base::Logger logger("ui");

constexpr std::size_t longestLabel = 60; // characters

// Takes the dialog off the screen when the task that asked has its answer or is gone.
class OpenAlert {
 public:
  explicit OpenAlert(GtkWindow* window) : window_(glib::share(window)) {}
  OpenAlert(const OpenAlert&) = delete;
  OpenAlert& operator=(const OpenAlert&) = delete;
  ~OpenAlert() { gtk_window_destroy(window_.get()); }

  AdwMessageDialog* dialog() const { return ADW_MESSAGE_DIALOG(window_.get()); }

 private:
  glib::Ref<GtkWindow> window_;
};

class OpenChooser {
 public:
  OpenChooser(const char* title, GtkWindow* parent, GtkFileChooserAction action)
      : native_(glib::adopt(gtk_file_chooser_native_new(title, parent, action, nullptr, nullptr))) {
    gtk_native_dialog_set_modal(GTK_NATIVE_DIALOG(native_.get()), TRUE);
  }
  OpenChooser(const OpenChooser&) = delete;
  OpenChooser& operator=(const OpenChooser&) = delete;
  ~OpenChooser() { gtk_native_dialog_destroy(GTK_NATIVE_DIALOG(native_.get())); }

  GtkNativeDialog* dialog() const { return GTK_NATIVE_DIALOG(native_.get()); }
  GtkFileChooser* chooser() const { return GTK_FILE_CHOOSER(native_.get()); }

  void startIn(const std::string& folder) {
    const auto place = glib::adopt(g_file_new_for_path(folder.c_str()));
    gtk_file_chooser_set_current_folder(chooser(), place.get(), nullptr);
  }

  // Shows these types first. What a page or a server says a file is may be wrong: all others can be chosen
  // too.
  void prefer(const std::vector<std::string>& mimeTypes) {
    if (mimeTypes.empty())
      return;
    const auto preferred = glib::adopt(gtk_file_filter_new());
    for (const auto& type : mimeTypes)
      gtk_file_filter_add_mime_type(preferred.get(), text::validUtf8(type).c_str());
    const glib::CString description(
        g_content_type_get_description(text::validUtf8(mimeTypes.front()).c_str()));
    gtk_file_filter_set_name(preferred.get(),
                             mimeTypes.size() == 1 ? description.get() : base::tr("Suitable Files"));
    const auto all = glib::adopt(gtk_file_filter_new());
    gtk_file_filter_add_pattern(all.get(), "*");
    gtk_file_filter_set_name(all.get(), base::tr("All Files"));
    for (const auto& filter : {preferred, all})
      gtk_file_chooser_add_filter(chooser(), filter.get());
    gtk_file_chooser_set_filter(chooser(), preferred.get());
  }

  std::vector<std::string> paths() const {
    std::vector<std::string> result;
    const auto files = glib::adopt(gtk_file_chooser_get_files(chooser()));
    for (guint i = 0; i < g_list_model_get_n_items(files.get()); ++i) {
      const auto file = glib::adopt(G_FILE(g_list_model_get_item(files.get(), i)));
      if (const glib::CString path(g_file_get_path(file.get())); path)
        result.emplace_back(path.get());
      else
        logger.error("A chosen file has no path on this machine and is left out");
    }
    return result;
  }

 private:
  glib::Ref<GtkFileChooserNative> native_;
};

// The underline marks a mnemonic in labels.
std::string label(const std::string& text) {
  std::string result;
  for (const char c : text::boundedUtf8(text, longestLabel))
    result.append(c == '_' ? 2 : 1, c);
  return result;
}

std::vector<std::string> labels(std::vector<std::string> buttons) {
  if (buttons.empty())
    buttons.emplace_back(base::tr("OK"));
  return buttons;
}

// What Escape answers, and a window that goes: nothing must come of it.
int dismissing(const std::vector<std::string>& buttons, const std::string& escapeButton) {
  const auto cancel = std::ranges::find(buttons, escapeButton);
  return static_cast<int>(cancel == buttons.end() ? buttons.size() - 1
                                                  : static_cast<std::size_t>(cancel - buttons.begin()));
}

void addButtons(AdwMessageDialog* dialog, const std::vector<std::string>& buttons, int dismiss,
                AlertStyle style) {
  const auto add = [&](int i) {
    adw_message_dialog_add_response(dialog, std::to_string(i).c_str(),
                                    label(buttons[static_cast<std::size_t>(i)]).c_str());
  };
  // The desktop's custom has the button that agrees at the end.
  add(dismiss);
  for (auto i = static_cast<int>(buttons.size()); i-- > 0;)
    if (i != dismiss)
      add(i);
  adw_message_dialog_set_default_response(dialog, "0");
  adw_message_dialog_set_close_response(dialog, std::to_string(dismiss).c_str());
  if (dismiss != 0)
    adw_message_dialog_set_response_appearance(dialog, "0", ADW_RESPONSE_SUGGESTED);
  else if (style != AlertStyle::informational)
    for (std::size_t i = 1; i < buttons.size(); ++i)
      adw_message_dialog_set_response_appearance(dialog, std::to_string(i).c_str(), ADW_RESPONSE_DESTRUCTIVE);
}

// The toolkit tells each one's label twice, and a screen reader would read it so.
void nameButtonsOnce(GtkWidget* widget) {
  if (GTK_IS_BUTTON(widget))
    gtk_accessible_reset_relation(GTK_ACCESSIBLE(widget), GTK_ACCESSIBLE_RELATION_LABELLED_BY);
  for (auto* child = gtk_widget_get_first_child(widget); child; child = gtk_widget_get_next_sibling(child))
    nameButtonsOnce(child);
}

// Whether the user accepted the choice.
async::Task<bool> accepted(GtkNativeDialog* dialog) {
  auto [resolver, future] = async::makeFuture<int>();
  const auto connection = glib::connect<void(GtkNativeDialog*, int)>(
      dialog, "response",
      [answer = std::move(resolver)](GtkNativeDialog*, int response) mutable { answer.resolve(response); });
  gtk_native_dialog_show(dialog);
  const auto response = co_await std::move(future);
  co_return response == GTK_RESPONSE_ACCEPT;
}

} // namespace

LinuxPanels::LinuxPanels(const Options& options)
    : folders_(options.defaults, options.directories), saveFolderKey_(options.saveFolderKey),
      openFolderKey_(options.openFolderKey), keepActive_(options.keepActive) {
}

async::Task<int> LinuxPanels::runAlert(Alert alert, std::shared_ptr<Window> parent) {
  const auto buttons = labels(std::move(alert.buttons));
  auto* topLevel = topLevelOf(parent);
  auto* window = GTK_WINDOW(adw_message_dialog_new(topLevel, nullptr, nullptr));
  const OpenAlert open(window);
  gtk_window_set_modal(window, TRUE);
  adw_message_dialog_set_heading(open.dialog(), text::boundedUtf8(alert.messageText, longestText).c_str());
  // For lists of windows. A title bar has no room for more than a label.
  gtk_window_set_title(window, text::boundedUtf8(alert.messageText, longestLabel).c_str());
  adw_message_dialog_set_body(open.dialog(), text::boundedUtf8(alert.informativeText, longestText).c_str());

  const auto dismiss = dismissing(buttons, alert.escapeButton);
  addButtons(open.dialog(), buttons, dismiss, alert.style);
  nameButtonsOnce(GTK_WIDGET(window));

  auto [resolver, future] = async::makeFuture<int>();
  const auto answer = std::make_shared<async::Resolver<int>>(std::move(resolver));
  const auto response = glib::connect<void(AdwMessageDialog*, const char*)>(
      open.dialog(), "response", [answer, dismiss](AdwMessageDialog*, const char* id) {
        answer->resolve(static_cast<int>(base::parsedInteger(id).value_or(dismiss)));
      });
  glib::Connection parentGone;
  // libadwaita 1.2 touches the parent when the dialog goes, dead or not: they part while it is alive.
  if (topLevel)
    parentGone =
        glib::connect<void(GtkWidget*)>(topLevel, "unrealize", [answer, dismiss, window](GtkWidget*) {
          gtk_window_set_transient_for(window, nullptr);
          answer->resolve(dismiss);
        });
  gtk_window_present(window);
  const auto pressed = co_await std::move(future);
  co_return firstButton + pressed.value_or(dismiss);
}

async::Task<std::optional<std::string>> LinuxPanels::runSavePanel(SavePanel panel,
                                                                  std::shared_ptr<Window> parent) {
  OpenChooser open(base::tr("Save File"), topLevelOf(parent), GTK_FILE_CHOOSER_ACTION_SAVE);
  const auto active = keepActive_ ? keepActive_() : base::Subscription();
  open.prefer(panel.mimeTypes);
  open.startIn(folders_.start(saveFolderKey_));
  gtk_file_chooser_set_current_name(
      open.chooser(), base::safeFileName(panel.proposedName, base::trIn("name of a file", "file")).c_str());
  const bool agreed = co_await accepted(open.dialog());
  if (!agreed)
    co_return std::nullopt;
  auto paths = open.paths();
  if (paths.empty())
    co_return std::nullopt;
  folders_.remember(saveFolderKey_, paths.front());
  co_return std::move(paths.front());
}

async::Task<std::optional<std::vector<std::string>>>
LinuxPanels::runOpenPanel(OpenPanel panel, std::shared_ptr<Window> parent) {
  const bool foldersOnly = panel.canChooseDirectories && !panel.canChooseFiles;
  OpenChooser open(foldersOnly ? base::tr("Open Folder") : base::tr("Open File"), topLevelOf(parent),
                   foldersOnly ? GTK_FILE_CHOOSER_ACTION_SELECT_FOLDER : GTK_FILE_CHOOSER_ACTION_OPEN);
  const auto active = keepActive_ ? keepActive_() : base::Subscription();
  if (!foldersOnly)
    open.prefer(panel.mimeTypes);
  open.startIn(folders_.start(openFolderKey_));
  gtk_file_chooser_set_select_multiple(open.chooser(), panel.allowsMultipleSelection);
  const bool agreed = co_await accepted(open.dialog());
  if (!agreed)
    co_return std::nullopt;
  auto paths = open.paths();
  if (paths.empty())
    co_return std::nullopt;
  folders_.remember(openFolderKey_, paths.front());
  co_return paths;
}

} // namespace ondrel::platform::windows
