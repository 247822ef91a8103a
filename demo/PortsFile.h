#pragma once

#include <cstdint>
#include <optional>
#include <string>

namespace ondrel::demo {

struct Ports {
  std::uint16_t web = 0;
  std::uint16_t control = 0;
  bool operator==(const Ports&) const = default;
};

// The ports of an earlier run. None when the file is missing or isn't one of ours.
std::optional<Ports> parsePorts(const std::string& text);
std::optional<Ports> readPortsFile(const std::string& path);
std::string portsFileFor(Ports ports);

} // namespace ondrel::demo
