#pragma once

#include <cstdint>
#include <expected>
#include <string>

namespace ondrel::demo {

// The address file that points the program at a service on this port. JSON, for people to read as well.
std::string siteFileFor(std::uint16_t webPort);

// The name of the service's own JMAP capability, of the user's preferences.
std::string userCapability(std::uint16_t webPort);

// Writes a whole file, for the user alone. An error is one line of text.
std::expected<void, std::string> writeFile(const std::string& path, const std::string& text);

} // namespace ondrel::demo
