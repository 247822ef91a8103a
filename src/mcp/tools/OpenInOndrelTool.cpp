#include "base/JsonReader.h"
#include "jmap/mail/MailQueries.h"
#include "mcp/tools/MCPTools.h"

#include <fmt/format.h>

namespace ondrel::mcp::tools {

namespace {

constexpr ToolArgument arguments[] = {
    {.name = "id",
     .description = "The JMAP email ID to open (from search_emails or get_email).",
     .isRequired = true},
};

async::Task<ToolOutcome> run(ToolServices& services, boost::json::object given) {
  const auto id = base::JsonReader(given)["id"].string().value_or("");
  const auto url = co_await services.mail.messageURL(id);
  if (!url)
    co_return std::unexpected(url.error().description());
  services.openURL(*url);
  services.activate();
  co_return fmt::format("Opened email {} in Ondrel.", id);
}

} // namespace

const MCPTool openInOndrelTool{
    .name = "open_in_ondrel",
    .description = "Navigate Ondrel to a specific email by its JMAP ID and bring the app to front.",
    .arguments = arguments,
    .run = run,
};

} // namespace ondrel::mcp::tools
