#pragma once

#include "mcp/ConfigValue.h"

#include <cstdint>
#include <expected>
#include <optional>
#include <string>

namespace ondrel::platform {
class Directories;
class FileStore;
} // namespace ondrel::platform

namespace ondrel::mcp {

// The address that a client on this machine is given.
std::string serverURL(std::int64_t port);

// The configuration file of Claude Code, ".claude.json" in the user's home, and the program's entry in it:
// "mcpServers", "ondrel". All else in the file is other people's and stays, as does a file that can't be kept
// whole. Synchronous; errors are for the log and tell nothing of the content. Main thread only.
class ClaudeConfig {
 public:
  // Both outlive it.
  ClaudeConfig(platform::Directories& directories, platform::FileStore& files);

  // Whether the program or its file is on this machine.
  bool detect() const;
  std::expected<void, std::string> registerServer(std::int64_t port);
  // Does not touch a file that has no entry.
  std::expected<void, std::string> unregister();

 private:
  struct File {
    std::string text;
    ConfigValue::Object config; // empty where the file has something other than an object
  };

  std::optional<std::string> path() const;
  std::expected<File, std::string> read() const;
  std::expected<void, std::string> write(const File& file);

  platform::Directories& directories_;
  platform::FileStore& files_;
};

} // namespace ondrel::mcp
