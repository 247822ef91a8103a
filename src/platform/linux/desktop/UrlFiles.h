#pragma once

#include <gio/gio.h>

namespace ondrel::platform::desktop {

// URLs travel between instances as GFiles, whose text must come out as it went in. The desktop's virtual file
// system may rewrite the URLs of schemes that it takes for its own; our schemes are kept from it. Once, at
// the start.
void keepUrlTexts();

} // namespace ondrel::platform::desktop
