#include "jmap/mail/MailQueries.h"
#include "mcp/tools/EmailHead.h"
#include "mcp/tools/MCPTools.h"

#include <fmt/ranges.h>

#include <map>
#include <ranges>

namespace ondrel::mcp::tools {

namespace {

std::string mailboxText(const jmap::MailboxSummary& mailbox) {
  const auto role = lineText(mailbox.role);
  return fmt::format("{}{} — {} emails, {} unread", lineText(mailbox.name).value_or(""),
                     role ? fmt::format(" [{}]", *role) : "", mailbox.totalEmails, mailbox.unreadEmails);
}

async::Task<ToolOutcome> run(ToolServices& services, boost::json::object) {
  const auto mailboxes = co_await services.mail.listMailboxes();
  if (!mailboxes)
    co_return std::unexpected(mailboxes.error().description());
  // By bytes, which is the order of the code points.
  std::multimap<std::string, std::string> lines;
  for (const auto& mailbox : *mailboxes)
    if (mailbox.name)
      lines.emplace(*mailbox.name, mailboxText(mailbox));
  co_return fmt::format("{}", fmt::join(lines | std::views::values, "\n"));
}

} // namespace

const MCPTool listMailboxesTool{
    .name = "list_mailboxes",
    .description = "List all Fastmail mailboxes (folders) with total and unread email counts.",
    .arguments = {},
    .run = run,
};

} // namespace ondrel::mcp::tools
