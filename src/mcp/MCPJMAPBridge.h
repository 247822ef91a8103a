#pragma once

#include "jmap/JMAPClient.h"
#include "mcp/MCPMailTools.h"

#include <boost/json/object.hpp>

#include <functional>
#include <string>
#include <string_view>

namespace ondrel::jmap {
class MailQueries;
}

namespace ondrel::platform {
class TextFormatting;
}

namespace ondrel::mcp {

// Where an email is shown.
struct MessageWindow {
  std::function<void(const std::string& url)> openURL;
  std::function<void()> activate; // the program, in front of all others
};

// The mail tools on the user's account: one JMAP request each (RFC 8621), rendered as plain text for a
// language model. Changes no mail, keeps nothing.
class MCPJMAPBridge final : public MCPMailTools {
 public:
  static constexpr std::int64_t mostEmails = 50;
  static constexpr std::size_t longestPreview = 200; // characters as people see them

  // All outlive it.
  MCPJMAPBridge(jmap::JMAPClient& client, jmap::MailQueries& mail, const platform::TextFormatting& formatting,
                MessageWindow window);

  async::Task<ToolOutcome> searchEmails(EmailSearch search) override;
  async::Task<ToolOutcome> getEmail(std::string id, std::int64_t offset) override;
  async::Task<ToolOutcome> listMailboxes() override;
  async::Task<ToolOutcome> openInOndrel(std::string id) override;

 private:
  jmap::JMAPClient& client_;
  jmap::MailQueries& mail_;
  const platform::TextFormatting& formatting_;
  MessageWindow window_;
};

} // namespace ondrel::mcp
