#include "webext/ScriptText.h"

#include "platform/linux/glib/Ref.h"

namespace ondrel::webext {

using glib::CString;

CaughtExceptions::CaughtExceptions(JSCContext* context) : context_(context) {
  jsc_context_push_exception_handler(
      context_,
      [](JSCContext*, JSCException* exception, gpointer data) {
        auto* self = static_cast<CaughtExceptions*>(data);
        if (self->text_)
          return;
        const CString raw(jsc_exception_to_string(exception));
        const CString valid(g_utf8_make_valid(raw ? raw.get() : "", -1));
        self->text_ = valid.get();
      },
      this, nullptr);
}

CaughtExceptions::~CaughtExceptions() {
  jsc_context_pop_exception_handler(context_);
}

std::string stringValue(JSCValue* value) {
  const CString raw(jsc_value_to_string(value));
  const CString valid(g_utf8_make_valid(raw ? raw.get() : "", -1));
  return valid.get();
}

std::optional<std::string> jsonText(JSCValue* value) {
  const CaughtExceptions caught(jsc_value_get_context(value));
  const CString json(jsc_value_to_json(value, 0));
  if (!json || caught.text())
    return std::nullopt;
  return json.get();
}

} // namespace ondrel::webext
