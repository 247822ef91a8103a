#pragma once

#include <cstdint>
#include <expected>
#include <string>
#include <vector>

namespace ondrel::demo {

// The command line.
struct Options {
  std::uint16_t port = 0;
  std::uint16_t controlPort = 0;
  std::string siteFile;
  std::string portsFile;
  bool untilEof = false;
};

// An error is one line of text.
std::expected<Options, std::string> parseOptions(const std::vector<std::string>& arguments);

} // namespace ondrel::demo
