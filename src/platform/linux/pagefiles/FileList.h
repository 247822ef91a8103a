#pragma once

#include "async/Task.h"
#include "platform/linux/glib/Ref.h"

#include <gdk/gdk.h>

#include <vector>

namespace ondrel::platform::pagefiles {

// Whether somebody has dragged files here or copied them, by what is on offer. A link or a part of a page may
// bring a list of files too, which the page has chosen and the user never saw.
bool offersFiles(GdkContentFormats* formats);

// The files that another program has dragged here or put on the clipboard; nothing for a failure.
//
// The list itself is asked for first, since the toolkit would ask for the portal's form of it, with no other
// way where the portal runs but can't pass files on. In a sandbox that form is the only one with names that
// can be opened.
async::Task<std::vector<glib::Ref<GFile>>> readFiles(glib::Ref<GdkDrop> drop);
async::Task<std::vector<glib::Ref<GFile>>> readFiles(glib::Ref<GdkClipboard> clipboard);

} // namespace ondrel::platform::pagefiles
