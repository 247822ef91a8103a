#pragma once

#include "platform/Window.h"

#include <optional>
#include <string>

namespace ondrel::platform {
class UserDefaults;
}

namespace ondrel::ui {

// The frame of a window that is opened again and again, kept in the user defaults under a name.
std::optional<platform::Rect> savedFrame(const platform::UserDefaults& defaults, const std::string& name);
void saveFrame(platform::UserDefaults& defaults, const std::string& name, const platform::Rect& frame);

} // namespace ondrel::ui
