#pragma once

#include "async/Task.h"

namespace ondrel::platform {
class Application;
class Panels;
} // namespace ondrel::platform

namespace ondrel::app {

class WindowManager;

// Waits for the letters that are under way: their pages end with the program. After three seconds it says so
// and lets the user choose. False when the user stays, or has to look after a letter that came back. All
// outlive it.
async::Task<bool> letLettersLeave(platform::Application& application, const WindowManager& windows,
                                  platform::Panels& panels);

} // namespace ondrel::app
