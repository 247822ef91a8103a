#pragma once

#include "base/Event.h"

#include <gtk/gtk.h>

namespace ondrel::integrations {
class AnnouncementService;
}

namespace ondrel::ui {

// Shows in that place what the project announces, for as long as the subscription lives. Both outlive it.
base::Subscription showAnnouncements(integrations::AnnouncementService& announcements, GtkRevealer* place);

} // namespace ondrel::ui
