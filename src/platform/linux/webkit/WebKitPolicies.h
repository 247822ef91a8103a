#pragma once

#include "platform/WebViewDelegate.h"

#include <webkit/webkit.h>

namespace ondrel::platform::webkit {

// `gesture` is the number of the last press of a key or button.
NavigationAction navigationActionFrom(WebKitNavigationAction* action, std::uint64_t gesture);
NavigationResponse navigationResponseFrom(WebKitResponsePolicyDecision* decision);

// Asks the delegate about a decision of the engine, of whichever kind. `refused` is called when the answer to
// a navigation is "cancel", before the engine hears of it; it must not be null and may come long afterwards.
void askForPolicy(WebViewDelegate& delegate, WebKitPolicyDecision* decision, WebKitPolicyDecisionType type,
                  std::uint64_t gesture, std::function<void()> refused);

} // namespace ondrel::platform::webkit
