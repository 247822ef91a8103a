#pragma once

#include <boost/json/fwd.hpp>

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace ondrel::platform {
class TextFormatting;
}

namespace ondrel::mcp {

// Emails and mailboxes of JMAP (RFC 8621) as lines with fixed labels. What the server left out or wrote in
// another type gets the text that stands for nothing.

// Without an id there is none.
std::optional<std::string> formatEmailSummary(const boost::json::object& email, std::size_t longestPreview,
                                              const platform::TextFormatting& formatting);
// With its first text part, plain or made so, from a character of it on (see textPage), under the id that was
// asked for.
std::string formatEmail(const boost::json::object& email, std::string_view id, std::int64_t offset,
                        const platform::TextFormatting& formatting);
// Without a name there is none.
std::optional<std::string> formatMailbox(const boost::json::object& mailbox);

} // namespace ondrel::mcp
