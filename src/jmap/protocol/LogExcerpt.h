#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

namespace ondrel::jmap {

// The first bytes of a text with each secret replaced by "<private>": as it is, with any of its characters
// escaped as in addresses or JSON, and as base64 in whatever company.
std::string redactedStart(std::string_view text, std::size_t most, const std::vector<std::string>& secrets);

// What of an Authorization and a Cookie header must not reach the log.
std::vector<std::string> secretsOf(std::string_view authorization, std::string_view cookie);

} // namespace ondrel::jmap
