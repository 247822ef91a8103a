#include "base/JsonReader.h"
#include "jmap/mail/MailQueries.h"
#include "mcp/tools/EmailHead.h"
#include "mcp/tools/MCPTools.h"
#include "platform/TextFormatting.h"

#include <fmt/ranges.h>

#include <algorithm>
#include <cstdint>
#include <optional>
#include <utility>
#include <vector>

namespace ondrel::mcp::tools {

namespace {

constexpr std::int64_t mostEmails = 50;
constexpr std::size_t longestPreview = 200; // characters as people see them

constexpr ToolArgument arguments[] = {
    {.name = "after",
     .description = "Only emails received after this ISO 8601 datetime (e.g. 2025-01-01T00:00:00Z)."},
    {.name = "before", .description = "Only emails received before this ISO 8601 datetime."},
    {.name = "from", .description = "Filter by sender address or name fragment."},
    {.name = "subject", .description = "Filter by subject keyword."},
    {.name = "limit",
     .type = ToolArgument::Type::integer,
     .description = "Maximum results to return (1–50, default 20)."},
};

// An empty text is a condition too.
jmap::EmailSearch readSearch(const base::JsonReader& given) {
  jmap::EmailSearch search{.after = given["after"].string(),
                           .before = given["before"].string(),
                           .from = given["from"].string(),
                           .subject = given["subject"].string()};
  const auto limit = given["limit"].wholeNumber().value_or(search.limit);
  search.limit = std::clamp<std::int64_t>(limit, 1, mostEmails);
  return search;
}

std::string previewText(const jmap::EmailSummary& email, const platform::TextFormatting& formatting) {
  auto text = lineText(email.preview).value_or("");
  const auto start = formatting.firstCharacters(text, longestPreview);
  return start.size() < text.size() ? std::string(start) + "…" : std::move(text);
}

async::Task<ToolOutcome> run(ToolServices& services, boost::json::object given) {
  const auto emails = co_await services.mail.searchEmails(readSearch(base::JsonReader(given)));
  if (!emails)
    co_return std::unexpected(emails.error().description());
  if (emails->empty())
    co_return "No emails found matching the search criteria.";
  std::vector<std::string> blocks;
  for (const auto& email : *emails)
    if (const auto id = lineText(email.id))
      blocks.push_back(fmt::format("{}\nPreview: {}", emailHead(*id, email, services.formatting),
                                   previewText(email, services.formatting)));
  co_return fmt::format("{}", fmt::join(blocks, "\n\n---\n\n"));
}

} // namespace

const MCPTool searchEmailsTool{
    .name = "search_emails",
    .description = "Search emails in Fastmail. Returns sender, subject, date, and a preview for each match.",
    .arguments = arguments,
    .run = run,
};

} // namespace ondrel::mcp::tools
