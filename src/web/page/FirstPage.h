#pragma once

#include "base/Base64.h"

#include <memory>
#include <optional>
#include <variant>

namespace ondrel::platform {
class WebView;
}

namespace ondrel::web {

// The tab loads what its urlString holds.
struct AddressPage {};

// The tab was there when the program ran last: its web view is made when it is shown.
struct RestoredPage {
  // The engine's, with the tab's history; without one its address is loaded.
  std::optional<base::Bytes> state;
  // Something else was asked for since: that is loaded on top of the history.
  bool isReplaced = false;
};

// A web view that the engine has made for a popup already, with its page on the way.
struct PopupPage {
  std::shared_ptr<platform::WebView> webView;
};

// How a tab gets its first page; used up when its web view is made.
using FirstPage = std::variant<AddressPage, RestoredPage, PopupPage>;

} // namespace ondrel::web
