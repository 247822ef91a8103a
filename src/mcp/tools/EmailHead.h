#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace ondrel::jmap {
struct EmailSummary;
}

namespace ondrel::platform {
class TextFormatting;
}

namespace ondrel::mcp::tools {

// A text of the sender's that stands on a line of ours. With line feeds in it, it could look like lines of
// ours, and so like another email.
std::optional<std::string> lineText(const std::optional<std::string>& text);

// Id, sender, subject and date under fixed labels, without a line feed at the end. What is absent gets the
// text that stands for nothing.
std::string emailHead(std::string_view id, const jmap::EmailSummary& email,
                      const platform::TextFormatting& formatting);

} // namespace ondrel::mcp::tools
