#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

namespace ondrel::jmap {

// The first bytes of a text with each secret replaced by "<private>".
std::string redactedStart(std::string_view text, std::size_t most, const std::vector<std::string>& secrets);

// What of an Authorization and a Cookie header must not reach the log, in each form in which a server could
// repeat it.
std::vector<std::string> secretsOf(std::string_view authorization, std::string_view cookie);

} // namespace ondrel::jmap
