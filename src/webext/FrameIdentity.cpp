#include "webext/FrameIdentity.h"

#include "platform/linux/glib/Ref.h"
#include "webext/ScriptText.h"

namespace ondrel::webext {

namespace {

// A script world of our own: its window objects are other ones than those of the page's world, and no script
// of a page can reach them. In the page's world a script can redefine what its window says of itself.
WebKitScriptWorld* privateWorld() {
  static WebKitScriptWorld* const world = webkit_script_world_new();
  return world;
}

// The properties of the window that a page can't shadow with named elements.
std::string windowProperty(JSCContext* context, const char* expression) {
  const CaughtExceptions caught(context);
  const auto value = glib::adopt(jsc_context_evaluate(context, expression, -1));
  if (!value || caught.text() || !jsc_value_is_string(value.get()))
    return {};
  return stringValue(value.get());
}

} // namespace

FrameIdentity identityOf(WebKitFrame* frame) {
  const auto context = glib::adopt(webkit_frame_get_js_context_for_script_world(frame, privateWorld()));
  FrameIdentity identity;
  identity.id = webkit_frame_get_id(frame);
  identity.isMainFrame = webkit_frame_is_main_frame(frame) != FALSE;
  identity.url = windowProperty(context.get(), "window.location.href");
  identity.origin = windowProperty(context.get(), "window.origin");
  return identity;
}

} // namespace ondrel::webext
