#pragma once

#include "base/Base64.h"

#include <webkit/webkit.h>

#include <optional>

namespace ondrel::platform::webkit {

// The back-forward list with the scroll position of each page, in the engine's own form behind a mark and a
// checksum of ours. The position of the page that is shown gets into it a moment after each scroll (measured:
// between 0.2 and 0.4 s). Absent when the list is empty.
std::optional<base::Bytes> sessionStateOf(WebKitWebView* view);

// Puts the list into the view, and loads nothing. False, with nothing done, when the bytes are
// damaged or of another version.
bool restoreSessionState(WebKitWebView* view, const base::Bytes& bytes);

} // namespace ondrel::platform::webkit
