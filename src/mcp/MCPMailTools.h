#pragma once

#include "async/Task.h"
#include "mcp/MCPContent.h"

#include <cstdint>
#include <expected>
#include <optional>
#include <string>
#include <vector>

namespace ondrel::mcp {

// The error is for the assistant and the person behind it.
using ToolOutcome = std::expected<std::vector<MCPContent>, std::string>;

// The conditions as the assistant wrote them; an empty text is a condition too.
struct EmailSearch {
  std::optional<std::string> after{};
  std::optional<std::string> before{};
  std::optional<std::string> from{};
  std::optional<std::string> subject{};
  std::int64_t limit = 20;

  bool operator==(const EmailSearch&) const = default;
};

// What an assistant can do with the user's mail. Main thread only; calls may run side by side.
class MCPMailTools {
 public:
  virtual ~MCPMailTools() = default;

  virtual async::Task<ToolOutcome> searchEmails(EmailSearch search) = 0;
  // From a character of the text on, counted from 0.
  virtual async::Task<ToolOutcome> getEmail(std::string id, std::int64_t offset) = 0;
  virtual async::Task<ToolOutcome> listMailboxes() = 0;
  virtual async::Task<ToolOutcome> openInOndrel(std::string id) = 0;
};

} // namespace ondrel::mcp
