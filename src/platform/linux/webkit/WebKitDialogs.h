#pragma once

#include "platform/WebViewDelegate.h"

#include <webkit/webkit.h>

namespace ondrel::platform::webkit {

// Hands a page's alert, confirm or prompt to the delegate; the page waits for the reply.
void showScriptDialog(WebViewDelegate& delegate, WebKitScriptDialog* dialog);
// Answers safely that nobody has seen it.
void dismissScriptDialog(WebKitScriptDialog* dialog);
// Of the page's wish to be asked before it is left. The page's own text for it isn't shown to anybody.
DoneReply leaveReplyTo(WebKitScriptDialog* dialog);

// Hands the page's request for files to the delegate.
void showFileChooser(WebViewDelegate& delegate, WebKitFileChooserRequest* request);

} // namespace ondrel::platform::webkit
