#pragma once

#include "platform/UriLauncher.h"

namespace ondrel::platform::desktop {

// Through GIO, which asks the portal where the program is confined.
class LinuxUriLauncher final : public UriLauncher {
 public:
  // Asynchronous; a failure is a log line. A program or desktop file is not started: its folder opens
  // instead.
  void open(const std::string& url) override;
  // Without the ".desktop" of the desktop file's name.
  std::optional<std::string> defaultApplicationForScheme(const std::string& scheme) const override;
  async::Task<std::expected<void, std::string>> openFile(std::string path) override;
  async::Task<std::expected<void, std::string>> openFileWith(std::string path, NativeView parent) override;
  // Asks the file manager on the bus, else opens the folder.
  async::Task<std::expected<void, std::string>> showFile(std::string path) override;
};

} // namespace ondrel::platform::desktop
