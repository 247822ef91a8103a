#pragma once

#include "platform/FileStore.h"
#include "platform/desktop/LoginItem.h"
#include "platform/linux/files/FileWatch.h"

#include <string>
#include <vector>

namespace ondrel::platform::desktop {

// The program's entry in the user's autostart folder (freedesktop.org's standard of autostart). It
// counts while a desktop would start this very program by it: not when it is switched off, was edited by hand
// to something else, or leads to where the program was once.
class AutostartEntry final : public LoginItem {
 public:
  struct Options {
    std::string folder;        // $XDG_CONFIG_HOME/autostart
    std::string applicationId; // names the file
    std::string applicationName;
    std::vector<std::string> command; // an absolute path and its arguments
  };
  // The files outlive it.
  AutostartEntry(FileStore& files, Options options);

  bool isEnabled() const override;
  async::Task<std::expected<void, std::string>> setEnabled(bool enabled) override;

 private:
  std::string content() const;

  FileStore& files_;
  const Options options_;
  const std::string path_;
  files::FileWatch watch_;
};

} // namespace ondrel::platform::desktop
