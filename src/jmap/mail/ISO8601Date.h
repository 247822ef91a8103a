#pragma once

#include <chrono>
#include <optional>
#include <string>
#include <string_view>

namespace ondrel::jmap {

using Milliseconds = std::chrono::sys_time<std::chrono::milliseconds>;

// A date with time and zone as in JMAP (RFC 8620, section 1.4): "2024-01-31T10:20:30Z" or with an offset such
// as "+02:00". Servers may write a fraction of the second: it is cut to milliseconds.
std::optional<Milliseconds> parseISO8601Date(std::string_view text);

// A UTCDate of JMAP: "2024-01-31T08:20:30Z", with a fraction only where there is one.
std::string formatUTCDate(Milliseconds time);

} // namespace ondrel::jmap
