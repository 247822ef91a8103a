#include "webext/UserScript.h"

#include "platform/linux/glib/Ref.h"
#include "webext/ScriptText.h"

namespace ondrel::webext {

namespace {

void run(JSCContext* context, const std::string& source) {
  const CaughtExceptions caught(context);
  // The value is of no interest.
  const auto value = glib::adopt(jsc_context_evaluate(context, source.c_str(), -1));
}

bool isLoading(JSCContext* context) {
  const CaughtExceptions caught(context);
  const auto value = glib::adopt(jsc_context_evaluate(context, "document.readyState === 'loading'", -1));
  return value && jsc_value_to_boolean(value.get());
}

// A native listener, so that the program runs at the top level of the page's world and not inside a function.
void runWhenRead(JSCContext* context, const std::string& source) {
  const CaughtExceptions caught(context);
  const auto listener = glib::adopt(jsc_value_new_function(
      context, nullptr, G_CALLBACK(+[](std::string* program) { run(jsc_context_get_current(), *program); }),
      new std::string(source), [](gpointer program) { delete static_cast<std::string*>(program); },
      G_TYPE_NONE, 0));
  const auto document = glib::adopt(jsc_context_get_value(context, "document"));
  const auto result = glib::adopt(
      jsc_value_object_invoke_method(document.get(), "addEventListener", G_TYPE_STRING, "DOMContentLoaded",
                                     JSC_TYPE_VALUE, listener.get(), G_TYPE_NONE));
}

} // namespace

void arrangeUserScripts(WebKitFrame* frame, const std::vector<UserScript>& scripts) {
  if (scripts.empty())
    return;
  const auto context = glib::adopt(webkit_frame_get_js_context(frame));
  const bool waits = isLoading(context.get());
  const bool isMainFrame = webkit_frame_is_main_frame(frame) != FALSE;
  for (const auto& script : scripts) {
    if (script.mainFrameOnly && !isMainFrame)
      continue;
    if (script.atDocumentStart || !waits)
      run(context.get(), script.source);
    else
      runWhenRead(context.get(), script.source);
  }
}

} // namespace ondrel::webext
