#pragma once

#include "platform/ScriptMessage.h"

#include <webkit/webkit.h>

#include <optional>

namespace ondrel::platform {

// The script message that the extension sent from the page; its web view is not filled in. Absent for
// everything else, for a body that is nested too deep and, with a log line, for the note that a message was
// too large.
std::optional<ScriptMessage> scriptMessageFrom(WebKitUserMessage* message);

} // namespace ondrel::platform
