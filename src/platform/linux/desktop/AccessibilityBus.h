#pragma once

namespace ondrel::platform::desktop {

// Where the session has no accessibility bus, GTK would warn about it: this switches its use off there,
// unless the user has set GTK_A11Y. Call before GTK is initialised.
void checkAccessibilityBus();

} // namespace ondrel::platform::desktop
