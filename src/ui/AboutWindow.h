#pragma once

#include <gtk/gtk.h>

#include <string>

namespace ondrel::platform {
struct ProgramInfo;
}

namespace ondrel::ui {

// `website` may be empty. `system` is what a report of a fault needs to know beside the toolkit, in lines.
// The window belongs to the toolkit.
GtkWindow* presentAbout(const platform::ProgramInfo& programInfo, const std::string& website,
                        const std::string& system, GtkWindow* parent);

} // namespace ondrel::ui
