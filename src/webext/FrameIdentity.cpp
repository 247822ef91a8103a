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

constexpr const char* numberKey = "ondrelDocument";

glib::Ref<JSCContext> privateContext(WebKitFrame* frame) {
  return glib::adopt(webkit_frame_get_js_context_for_script_world(frame, privateWorld()));
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
  const auto context = privateContext(frame);
  FrameIdentity identity;
  identity.id = webkit_frame_get_id(frame);
  identity.isMainFrame = webkit_frame_is_main_frame(frame) != FALSE;
  identity.url = windowProperty(context.get(), "window.location.href");
  identity.origin = windowProperty(context.get(), "window.origin");
  return identity;
}

void numberDocument(WebKitFrame* frame, std::uint64_t number) {
  const auto context = privateContext(frame);
  const auto value = glib::adopt(jsc_value_new_number(context.get(), static_cast<double>(number)));
  jsc_context_set_value(context.get(), numberKey, value.get());
}

std::uint64_t documentNumber(WebKitFrame* frame) {
  const auto context = privateContext(frame);
  const auto value = glib::adopt(jsc_context_get_value(context.get(), numberKey));
  return jsc_value_is_number(value.get()) ? static_cast<std::uint64_t>(jsc_value_to_double(value.get())) : 0;
}

} // namespace ondrel::webext
