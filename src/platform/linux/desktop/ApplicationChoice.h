#pragma once

#include "async/Task.h"
#include "platform/linux/glib/Ref.h"

#include <gtk/gtk.h>

namespace ondrel::platform::desktop {

// Asks the user in a dialog which application opens the file. Null when the user cancels or the parent goes;
// the parent may be null.
async::Task<glib::Ref<GAppInfo>> chooseApplication(glib::Ref<GtkWindow> parent, glib::Ref<GFile> file);

} // namespace ondrel::platform::desktop
