#include "platform/linux/webkit/WebKitEvaluation.h"

#include "platform/linux/glib/AsyncResult.h"
#include "platform/linux/text/PageJson.h"
#include "platform/linux/text/SafeText.h"
#include "platform/linux/webkit/WebKitMessages.h"

#include <charconv>

namespace ondrel::platform::webkit {

namespace {

using Kind = ScriptError::Kind;

// What the engine calls an evaluated text where it says in which line something went wrong: told from scripts
// of the page, and still an address of the page's origin, since the engine hides from the page's own handlers
// what goes wrong in others.
std::string sourceName(WebKitWebView* view) {
  const char* address = webkit_web_view_get_uri(view);
  const std::string page(address ? address : "about:blank");
  return page.substr(0, page.find('#')) + "#ondrel";
}

std::unexpected<ScriptError> failure(Kind kind, std::string message = {}) {
  return std::unexpected(ScriptError{kind, std::move(message)});
}

ScriptResult fromJson(const char* json) {
  if (json) {
    if (auto value = text::parsePageJson(json))
      return std::move(*value);
  }
  return failure(Kind::unsupportedValue);
}

// The engine has the place in front of its message, "<source>:3:12: " or, for a syntax error, "<source>:3: ".
ScriptError exception(std::string message, const std::string& source) {
  const auto prefix = source + ":";
  const auto end = message.find(": ", prefix.size());
  int line = 0;
  if (!message.starts_with(prefix) || end == std::string::npos ||
      std::from_chars(message.data() + prefix.size(), message.data() + end, line).ec != std::errc())
    return {Kind::exception, std::move(message)};
  return {Kind::exception, message.substr(end + 2), line};
}

ScriptResult fromError(const glib::Error& error, const std::string& source) {
  if (error.matches(WEBKIT_JAVASCRIPT_ERROR, WEBKIT_JAVASCRIPT_ERROR_SCRIPT_FAILED))
    return std::unexpected(exception(text::validUtf8(error.message()), source));
  if (error.matches(WEBKIT_JAVASCRIPT_ERROR, WEBKIT_JAVASCRIPT_ERROR_INVALID_RESULT))
    return failure(Kind::unsupportedValue);
  return failure(Kind::gone, text::validUtf8(error.message()));
}

ScriptResult fromAnswer(WebKitUserMessage* answer) {
  auto* parameters = webkit_user_message_get_parameters(answer);
  if (!parameters || !g_variant_is_of_type(parameters, G_VARIANT_TYPE(webkit::evaluatedFormat)))
    return failure(Kind::gone);
  guint kind = 0;
  const char* text = nullptr;
  g_variant_get(parameters, "(u&s)", &kind, &text);
  switch (static_cast<webkit::Evaluated>(kind)) {
  case webkit::Evaluated::value:
    return fromJson(text);
  case webkit::Evaluated::exception:
    return failure(Kind::exception, text);
  case webkit::Evaluated::unsupportedValue:
    return failure(Kind::unsupportedValue);
  case webkit::Evaluated::frameGone:
    break;
  }
  return failure(Kind::gone);
}

} // namespace

async::Task<ScriptResult> evaluateInMainFrame(glib::Ref<WebKitWebView> view, std::string source) {
  const auto name = sourceName(view.get());
  auto [pending, future] = glib::startAsync();
  webkit_web_view_evaluate_javascript(view.get(), source.data(), static_cast<gssize>(source.size()), nullptr,
                                      name.c_str(), pending.cancellable, glib::PendingCall::callback,
                                      pending.userData);
  const auto result = co_await std::move(future);
  if (!result)
    co_return failure(Kind::gone);
  glib::Error error;
  const auto value =
      glib::adopt(webkit_web_view_evaluate_javascript_finish(view.get(), result->get(), error.out()));
  if (!value)
    co_return fromError(error, name);
  if (jsc_value_is_undefined(value.get()) || jsc_value_is_null(value.get()))
    co_return boost::json::value(nullptr);
  const glib::CString json(jsc_value_to_json(value.get(), 0));
  co_return fromJson(json.get());
}

async::Task<ScriptResult> evaluateInFrame(glib::Ref<WebKitWebView> view, std::string source,
                                          FrameInfo frame) {
  auto [pending, future] = glib::startAsync();
  const auto text = text::validUtf8(source);
  webkit_web_view_send_message_to_page(
      view.get(),
      webkit_user_message_new(webkit::evaluate,
                              g_variant_new(webkit::evaluateFormat, guint64{frame.id},
                                            text::validUtf8(frame.origin).c_str(), text.c_str())),
      pending.cancellable, glib::PendingCall::callback, pending.userData);
  const auto result = co_await std::move(future);
  if (!result)
    co_return failure(Kind::gone);
  glib::Error error;
  const auto answer =
      glib::adopt(webkit_web_view_send_message_to_page_finish(view.get(), result->get(), error.out()));
  if (!answer)
    co_return failure(Kind::gone, text::validUtf8(error.message()));
  co_return fromAnswer(answer.get());
}

} // namespace ondrel::platform::webkit
