#pragma once

#include "platform/FrameInfo.h"

#include <boost/json/value.hpp>

#include <memory>
#include <string>

namespace ondrel::platform {

class WebView;

// One call of window.webkit.messageHandlers.NAME.postMessage(body). Everything in it comes from the page:
// nothing has been checked but the size (at most largestBody bytes of JSON; larger messages are dropped with
// a log line).
struct ScriptMessage {
  // Room for the highlight of a text of 1 MiB that JSON escapes twice: 7 bytes for some characters.
  static constexpr std::size_t largestBody = std::size_t{8} << 20;

  std::string name;
  boost::json::value body; // null for what JSON can't express
  FrameInfo frame;
  std::weak_ptr<WebView> webView;
};

} // namespace ondrel::platform
