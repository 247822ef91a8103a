#include "base/JsonReader.h"
#include "jmap/mail/MailQueries.h"
#include "mcp/tools/EmailHead.h"
#include "mcp/tools/HtmlText.h"
#include "mcp/tools/MCPTools.h"
#include "mcp/tools/TextPage.h"

#include <fmt/format.h>

#include <optional>

namespace ondrel::mcp::tools {

namespace {

constexpr ToolArgument arguments[] = {
    {.name = "id", .description = "The JMAP email ID returned by search_emails.", .isRequired = true},
    {.name = "offset",
     .type = ToolArgument::Type::integer,
     .description = "Where to begin in a long text: the number of characters to skip (default 0)."},
};

std::string bodyText(const std::optional<jmap::EmailBody>& body) {
  if (!body)
    return "(no plain text body)";
  return body->isHTML ? textOfHtml(body->text) : body->text;
}

async::Task<ToolOutcome> run(ToolServices& services, boost::json::object given) {
  const base::JsonReader reader(given);
  const auto id = reader["id"].string().value_or("");
  const auto offset = reader["offset"].wholeNumber().value_or(0);
  const auto email = co_await services.mail.fullEmail(id);
  if (!email)
    co_return std::unexpected(email.error().description());
  co_return fmt::format("{}\n\n{}", emailHead(id, email->summary, services.formatting),
                        textPage(bodyText(email->body), offset));
}

} // namespace

const MCPTool getEmailTool{
    .name = "get_email",
    .description =
        "Retrieve the full content of a single email by its JMAP ID (obtained from search_emails).",
    .arguments = arguments,
    .run = run,
};

} // namespace ondrel::mcp::tools
