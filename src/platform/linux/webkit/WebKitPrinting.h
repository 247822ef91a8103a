#pragma once

#include "platform/WebView.h"
#include "platform/linux/glib/Ref.h"

#include <webkit/webkit.h>

namespace ondrel::platform::webkit {

// Prints what the view shows: into a file, or where the user says in the print dialog.
async::Task<PrintResult> printView(glib::Ref<WebKitWebView> view, PrintSettings settings);

} // namespace ondrel::platform::webkit
