#pragma once

#include "platform/WebView.h"
#include "platform/linux/glib/Ref.h"

#include <webkit/webkit.h>

#include <string>

namespace ondrel::platform::webkit {

// Run a program in the page's world and wait for its value, in the main frame by the engine's own call, in
// another one through the extension. Neither ends before the page answers: bound them with a deadline. A
// frame that shows a document of another origin by now counts as gone.
async::Task<ScriptResult> evaluateInMainFrame(glib::Ref<WebKitWebView> view, std::string source);
async::Task<ScriptResult> evaluateInFrame(glib::Ref<WebKitWebView> view, std::string source, FrameInfo frame);

} // namespace ondrel::platform::webkit
