#pragma once

#include <functional>

namespace ondrel::program {

// Facts about the application's life that stand outside all views. Main thread only.
struct AppLifecycleService {
  // The application that took the foreground when this one last lost it was Hookmark.
  bool isHookmarkActive = false;
  // Opens the settings window; unset until the icon in the panel has been there.
  std::function<void()> openSettingsAction;
};

} // namespace ondrel::program
