#pragma once

#include "platform/ScriptMessage.h"

#include <webkit/webkit.h>

#include <optional>

namespace ondrel::platform::webkit {

// The script message that the extension sent from the page; its web view is not filled in. Absent for
// everything else, for a body that is nested too deep and, with a log line, for the notes that a message was
// too large or that there were too many.
std::optional<ScriptMessage> scriptMessageFrom(WebKitUserMessage* message);

} // namespace ondrel::platform::webkit
