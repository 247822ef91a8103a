#pragma once

#include "platform/FileStore.h"

namespace ondrel::platform::files {

// The folders of the XDG base directory and user directory standards. A relative path in a variable is
// ignored.
class XdgDirectories final : public Directories {
 public:
  std::optional<std::string> applicationSupport() const override; // $XDG_DATA_HOME/ondrel
  std::optional<std::string> documents() const override;
  std::optional<std::string> downloads() const override; // ~/Downloads where none is configured
  std::string temporary() const override;
  std::string home() const override;

  std::string configuration() const; // $XDG_CONFIG_HOME/ondrel
  std::string cache() const;         // $XDG_CACHE_HOME/ondrel
  std::string autostart() const;     // $XDG_CONFIG_HOME/autostart, of all programs
};

} // namespace ondrel::platform::files
