#include "webext/Evaluation.h"

#include "platform/linux/glib/Ref.h"
#include "webext/ScriptText.h"

namespace ondrel::webext {

using platform::webkit::Evaluated;

Evaluation evaluateIn(WebKitFrame* frame, const char* source) {
  const auto context = glib::adopt(webkit_frame_get_js_context(frame));
  const CaughtExceptions caught(context.get());
  const auto value = glib::adopt(jsc_context_evaluate(context.get(), source, -1));
  if (caught.text())
    return {Evaluated::exception, *caught.text()};
  if (!value || jsc_value_is_undefined(value.get()) || jsc_value_is_null(value.get()))
    return {Evaluated::value, "null"};
  if (auto json = jsonText(value.get()))
    return {Evaluated::value, std::move(*json)};
  return {Evaluated::unsupportedValue, {}};
}

} // namespace ondrel::webext
