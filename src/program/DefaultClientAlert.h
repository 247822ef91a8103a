#pragma once

#include "async/Task.h"
#include "platform/ProgramInfo.h"

#include <chrono>

namespace ondrel::platform {
class Application;
class Panels;
class UriLauncher;
} // namespace ondrel::platform

namespace ondrel::settings {
class AppSettings;
}

namespace ondrel::program {

struct AppLifecycleService;

// Asks, once the delay is over, whether the user wants the program to be the default mail application. Asked
// at most once, unless the user switches the question on again.
async::Task<void> askToBecomeDefault(std::chrono::seconds delay, platform::ProgramInfo programInfo,
                                     platform::Application& application, platform::UriLauncher& uriLauncher,
                                     platform::Panels& panels, settings::AppSettings& settings,
                                     AppLifecycleService& lifecycle);

} // namespace ondrel::program
