#pragma once

#include "base/Base64.h"

#include <cstddef>
#include <expected>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace ondrel::app {

// The saved windows and tabs, as session.json holds them: keys are the field names, bytes are base64, an
// absent optional leaves its key out, and so does a window's state that is the usual one.
struct PersistedTab {
  std::string urlString;
  std::string title;
  std::optional<base::Bytes> interactionState; // of the engine: back-forward list and scroll positions
  double pageZoom = 1.0;
  bool toolbarVisible = true;

  bool operator==(const PersistedTab&) const = default;
};

struct PersistedFrame {
  double x = 0;
  double y = 0;
  double width = 0;
  double height = 0;

  bool operator==(const PersistedFrame&) const = default;
};

// A group of tabs, or a lone window.
struct PersistedWindow {
  std::vector<PersistedTab> tabs;
  std::optional<PersistedFrame> frame;
  bool isMaximized = false;    // the frame is then what it goes back to
  std::size_t selectedTab = 0; // the one in front

  bool operator==(const PersistedWindow&) const = default;
};

struct PersistedSession {
  std::vector<PersistedWindow> windows;

  bool operator==(const PersistedSession&) const = default;

  std::string encoded() const;
  // A missing key or one of the wrong type fails the whole; unknown keys are passed over. The error is for
  // the log.
  static std::expected<PersistedSession, std::string> decode(std::string_view json);
};

} // namespace ondrel::app
