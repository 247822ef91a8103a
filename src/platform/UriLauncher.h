#pragma once

#include <optional>
#include <string>

namespace ondrel::platform {

// The desktop around the program.
class UriLauncher {
 public:
  virtual ~UriLauncher() = default;
  // Hands a URL to the desktop, by a library call and never through a shell. Refuses with a log line what
  // doesn't parse as an absolute URL, begins with "-" or holds control characters.
  virtual void open(const std::string& url) = 0;
  // The id of the application that opens URLs of that scheme.
  virtual std::optional<std::string> defaultApplicationForScheme(const std::string& scheme) const = 0;
};

} // namespace ondrel::platform
