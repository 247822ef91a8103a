#include "platform/linux/webkit/WebKitScriptMessages.h"

#include "base/Log.h"
#include "platform/linux/text/PageJson.h"
#include "platform/linux/webkit/WebKitMessages.h"

#include <string_view>

namespace ondrel::platform::webkit {

namespace {

constexpr base::Logger logger("script");

std::optional<ScriptMessage> decoded(GVariant* parameters) {
  const char* name = nullptr;
  const char* json = nullptr;
  const char* url = nullptr;
  const char* origin = nullptr;
  guint64 id = 0;
  gboolean isMainFrame = FALSE;
  g_variant_get(parameters, "(&s&st&s&sb)", &name, &json, &id, &url, &origin, &isMainFrame);

  // Checked there already, but by a process that the page may have taken over.
  const std::string_view text(json);
  if (text.size() > ScriptMessage::largestBody)
    return std::nullopt;
  ScriptMessage result;
  if (!text.empty()) {
    auto body = text::parsePageJson(text);
    if (!body) {
      logger.error("A script message is nested too deep and was dropped");
      return std::nullopt;
    }
    result.body = std::move(*body);
  }
  result.name = name;
  result.frame = {id, url, origin, isMainFrame != FALSE};
  return result;
}

} // namespace

std::optional<ScriptMessage> scriptMessageFrom(WebKitUserMessage* message) {
  const std::string_view kind(webkit_user_message_get_name(message));
  auto* parameters = webkit_user_message_get_parameters(message);
  const auto hasFormat = [&](const char* format) {
    return parameters && g_variant_is_of_type(parameters, G_VARIANT_TYPE(format));
  };
  if (kind == webkit::scriptMessage && hasFormat(webkit::scriptMessageFormat))
    return decoded(parameters);
  if (kind == webkit::messageTooLarge && hasFormat(webkit::messageTooLargeFormat)) {
    guint64 size = 0;
    g_variant_get(parameters, "(&st)", nullptr, &size);
    logger.error("A script message of {} bytes was dropped", size);
  }
  if (kind == webkit::messagesDropped)
    logger.error("A page posts more script messages than there is time for, and some were dropped");
  return std::nullopt;
}

} // namespace ondrel::platform::webkit
