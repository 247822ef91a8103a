#pragma once

#include <gtk/gtk.h>

#include <string>

namespace ondrel::platform {
struct ProgramInfo;
}

namespace ondrel::ui {

// `website` may be empty. The window belongs to the toolkit.
GtkWindow* presentAbout(const platform::ProgramInfo& programInfo, const std::string& website,
                        GtkWindow* parent);

} // namespace ondrel::ui
