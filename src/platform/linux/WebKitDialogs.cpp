#include "platform/linux/WebKitDialogs.h"

#include "async/EventLoop.h"
#include "platform/linux/SafeText.h"
#include "platform/linux/glib/Ref.h"

#include <memory>

namespace ondrel::platform {

namespace {

struct DialogDeleter {
  void operator()(WebKitScriptDialog* dialog) const { webkit_script_dialog_unref(dialog); }
};
using Dialog = std::unique_ptr<WebKitScriptDialog, DialogDeleter>;

constexpr const char* leaveQuestion = "Leave this page? What you entered may be lost.";

std::string textOf(WebKitScriptDialog* dialog) {
  const auto* text = webkit_script_dialog_get_message(dialog);
  return validUtf8(text ? text : "");
}

// Closes the dialog with a turn of its own: the engine crashes when it is closed inside the signal that shows
// it (measured, 2.50).
DoneReply replyTo(WebKitScriptDialog* dialog, bool hasAnswer) {
  return {[kept = Dialog(webkit_script_dialog_ref(dialog)), hasAnswer](bool confirmed) mutable {
            if (hasAnswer)
              webkit_script_dialog_confirm_set_confirmed(kept.get(), confirmed);
            async::EventLoop::current().post(
                [answered = std::move(kept)] { webkit_script_dialog_close(answered.get()); });
          },
          false};
}

} // namespace

bool showScriptDialog(WebViewDelegate& delegate, WebKitScriptDialog* dialog) {
  auto text = textOf(dialog);
  switch (webkit_script_dialog_get_dialog_type(dialog)) {
  case WEBKIT_SCRIPT_DIALOG_ALERT:
    delegate.runAlertPanel(text, replyTo(dialog, false));
    return true;
  case WEBKIT_SCRIPT_DIALOG_CONFIRM:
    delegate.runConfirmPanel(text, replyTo(dialog, true));
    return true;
  case WEBKIT_SCRIPT_DIALOG_BEFORE_UNLOAD_CONFIRM:
    delegate.runConfirmPanel(text.empty() ? leaveQuestion : text, replyTo(dialog, true));
    return true;
  case WEBKIT_SCRIPT_DIALOG_PROMPT:
    break;
  }
  return false;
}

void showFileChooser(WebViewDelegate& delegate, WebKitFileChooserRequest* request) {
  OpenPanelParameters parameters;
  parameters.allowsMultipleSelection = webkit_file_chooser_request_get_select_multiple(request) != FALSE;
  if (const auto* types = webkit_file_chooser_request_get_mime_types(request)) {
    for (; *types; ++types)
      parameters.mimeTypes.push_back(validUtf8(*types));
  }
  FilesReply reply(
      [kept = glib::share(request)](std::optional<std::vector<std::string>> files) {
        if (!files || files->empty()) {
          webkit_file_chooser_request_cancel(kept.get());
          return;
        }
        std::vector<const char*> paths;
        for (const auto& file : *files)
          paths.push_back(file.c_str());
        paths.push_back(nullptr);
        webkit_file_chooser_request_select_files(kept.get(), paths.data());
      },
      std::nullopt);
  delegate.runOpenPanel(parameters, std::move(reply));
}

} // namespace ondrel::platform
