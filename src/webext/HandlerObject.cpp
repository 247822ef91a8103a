#include "webext/HandlerObject.h"

#include "platform/linux/glib/Ref.h"
#include "webext/ScriptText.h"

namespace ondrel::webext {

namespace {

using Value = glib::Ref<JSCValue>;

// Defined and not assigned, so that no setter of the page is called.
void define(JSCValue* object, const char* name, JSCValue* value) {
  constexpr auto flags = static_cast<JSCValuePropertyFlags>(
      JSC_VALUE_PROPERTY_CONFIGURABLE | JSC_VALUE_PROPERTY_ENUMERABLE | JSC_VALUE_PROPERTY_WRITABLE);
  jsc_value_object_define_property_data(object, name, flags, value);
}

Value objectMember(JSCContext* context, JSCValue* parent, const char* name) {
  auto member = glib::adopt(jsc_value_object_get_property(parent, name));
  if (member && jsc_value_is_object(member.get()))
    return member;
  member = glib::adopt(jsc_value_new_object(context, nullptr, nullptr));
  define(parent, name, member.get());
  return member;
}

} // namespace

void installHandler(JSCContext* context, const std::string& name, JSCValue* postMessage) {
  const CaughtExceptions caught(context);
  const auto window = glib::adopt(jsc_context_get_global_object(context));
  const auto webkit = objectMember(context, window.get(), "webkit");
  const auto handlers = objectMember(context, webkit.get(), "messageHandlers");
  const auto handler = glib::adopt(jsc_value_new_object(context, nullptr, nullptr));
  define(handler.get(), "postMessage", postMessage);
  define(handlers.get(), name.c_str(), handler.get());
}

} // namespace ondrel::webext
