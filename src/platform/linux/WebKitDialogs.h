#pragma once

#include "platform/WebViewDelegate.h"

#include <webkit/webkit.h>

namespace ondrel::platform {

// Hands a page's alert or confirm, or its wish to be asked before it is left, to the delegate; the page waits
// for the reply. False for a prompt, which the engine shows in the page.
bool showScriptDialog(WebViewDelegate& delegate, WebKitScriptDialog* dialog);

// Hands the page's request for files to the delegate.
void showFileChooser(WebViewDelegate& delegate, WebKitFileChooserRequest* request);

} // namespace ondrel::platform
