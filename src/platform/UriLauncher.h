#pragma once

#include "async/Task.h"
#include "platform/NativeView.h"

#include <expected>
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

  // Opens a file of the user's in the application for it; a program, script or desktop file is shown as
  // showFile() does. Errors are sentences for the user.
  virtual async::Task<std::expected<void, std::string>> openFile(std::string path) = 0;
  // The same in the application that the user chooses in a dialog on the window that `parent` is in, which
  // may be empty. Cancelling is no error.
  virtual async::Task<std::expected<void, std::string>> openFileWith(std::string path, NativeView parent) = 0;
  // Shows a file in its folder, selected where the desktop's file manager can do that.
  virtual async::Task<std::expected<void, std::string>> showFile(std::string path) = 0;
};

} // namespace ondrel::platform
