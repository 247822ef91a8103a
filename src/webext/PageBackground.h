#pragma once

#include <webkit/webkit-web-process-extension.h>

#include <functional>

namespace ondrel::webext {

// Looks whether the document of the frame draws a background of its own, as soon as it shows something, and
// again when it comes back from the history: calls `wantsWhite` for dark text on none. Looks from a world of
// its own, which the page's scripts can't reach. Call when the document has been read.
void watchBackground(WebKitFrame* frame, std::function<void()> wantsWhite);

} // namespace ondrel::webext
