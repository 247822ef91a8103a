#pragma once

#include "base/Log.h"

#include <glib.h>

#include <string>
#include <string_view>

namespace ondrel::platform::text {

// Takes the program's log lines and GLib's own: to the journal when standard error leads there, with the
// fields SUBSYSTEM and CATEGORY, to standard error otherwise. ONDREL_LOG=info or debug shows more than
// notices and errors. What GLib and its libraries say at debug and info level follows G_MESSAGES_DEBUG.
class GlibLogSink {
 public:
  // Once, before anything logs; later calls do nothing. `subsystem` is the program's id.
  static void install(std::string subsystem);

  // Whether lines of that level are shown.
  static bool shows(base::LogLevel level);
  static base::LogLevel levelFromEnvironment(const char* value);
  // "2026-01-31 12:00:00.000 ondrel[system] error: message", one line of valid UTF-8 without control
  // characters.
  static std::string line(std::string_view time, std::string_view origin, GLogLevelFlags level,
                          std::string_view message);
  // Control characters as \n, \t or \x1b, invalid bytes as U+FFFD; cut at 64 KiB.
  static std::string escaped(std::string_view message);
};

} // namespace ondrel::platform::text
