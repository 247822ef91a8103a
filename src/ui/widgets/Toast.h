#pragma once

#include "platform/linux/glib/Ref.h"

#include <adwaita.h>

#include <string>

namespace ondrel::ui {

// A line in passing over a window's lower edge, of plain text. It goes over several lines where the window is
// narrow; the toolkit's own would be cut there.
glib::Ref<AdwToast> makeToast(const std::string& text);

} // namespace ondrel::ui
