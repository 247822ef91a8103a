#include "platform/linux/webkit/WebKitDialogs.h"

#include "async/EventLoop.h"
#include "platform/linux/glib/Ref.h"
#include "platform/linux/text/SafeText.h"

#include <memory>

namespace ondrel::platform::webkit {

namespace {

struct DialogDeleter {
  void operator()(WebKitScriptDialog* dialog) const { webkit_script_dialog_unref(dialog); }
};
using Dialog = std::unique_ptr<WebKitScriptDialog, DialogDeleter>;

std::string textOf(const char* text) {
  return text::validUtf8(text ? text : "");
}

// Closes the dialog with a turn of its own: the engine crashes when it is closed inside the signal that shows
// it (measured, 2.50).
void closeLater(Dialog dialog) {
  async::EventLoop::current().post(
      [answered = std::move(dialog)] { webkit_script_dialog_close(answered.get()); });
}

DoneReply replyTo(WebKitScriptDialog* dialog, bool hasAnswer) {
  return {[kept = Dialog(webkit_script_dialog_ref(dialog)), hasAnswer](bool confirmed) mutable {
            if (hasAnswer)
              webkit_script_dialog_confirm_set_confirmed(kept.get(), confirmed);
            closeLater(std::move(kept));
          },
          false};
}

PromptReply promptReplyTo(WebKitScriptDialog* dialog) {
  return {[kept = Dialog(webkit_script_dialog_ref(dialog))](std::optional<std::string> text) mutable {
            if (text) // none is null for the page
              webkit_script_dialog_prompt_set_text(kept.get(), text::validUtf8(*text).c_str());
            closeLater(std::move(kept));
          },
          std::nullopt};
}

} // namespace

void showScriptDialog(WebViewDelegate& delegate, WebKitScriptDialog* dialog) {
  const auto text = textOf(webkit_script_dialog_get_message(dialog));
  switch (webkit_script_dialog_get_dialog_type(dialog)) {
  case WEBKIT_SCRIPT_DIALOG_ALERT:
    delegate.runAlertPanel(text, replyTo(dialog, false));
    return;
  case WEBKIT_SCRIPT_DIALOG_CONFIRM:
    delegate.runConfirmPanel(text, replyTo(dialog, true));
    return;
  case WEBKIT_SCRIPT_DIALOG_PROMPT:
    delegate.runPromptPanel(text, textOf(webkit_script_dialog_prompt_get_default_text(dialog)),
                            promptReplyTo(dialog));
    return;
  case WEBKIT_SCRIPT_DIALOG_BEFORE_UNLOAD_CONFIRM:
    delegate.runBeforeUnloadPanel(leaveReplyTo(dialog));
    return;
  }
}

void dismissScriptDialog(WebKitScriptDialog* dialog) {
  closeLater(Dialog(webkit_script_dialog_ref(dialog)));
}

DoneReply leaveReplyTo(WebKitScriptDialog* dialog) {
  return replyTo(dialog, true);
}

void showFileChooser(WebViewDelegate& delegate, WebKitFileChooserRequest* request) {
  OpenPanelParameters parameters;
  parameters.allowsMultipleSelection = webkit_file_chooser_request_get_select_multiple(request) != FALSE;
  if (const auto* types = webkit_file_chooser_request_get_mime_types(request)) {
    for (; *types; ++types)
      parameters.mimeTypes.push_back(text::validUtf8(*types));
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

} // namespace ondrel::platform::webkit
