#include "mcp/MCPTools.h"

#include <boost/json/array.hpp>
#include <boost/json/object.hpp>

#include <string_view>

namespace ondrel::mcp {

namespace {

namespace json = boost::json;

json::object property(std::string_view type, std::string_view description) {
  return {{"type", type}, {"description", description}};
}

json::object schema(json::object properties, json::array required) {
  return {{"type", "object"}, {"properties", std::move(properties)}, {"required", std::move(required)}};
}

} // namespace

const std::vector<MCPTool>& mcpTools() {
  static const std::vector<MCPTool> tools{
      {.name = "search_emails",
       .description =
           "Search emails in Fastmail. Returns sender, subject, date, and a preview for each match.",
       .inputSchema = schema(
           {{"after",
             property("string",
                      "Only emails received after this ISO 8601 datetime (e.g. 2025-01-01T00:00:00Z).")},
            {"before", property("string", "Only emails received before this ISO 8601 datetime.")},
            {"from", property("string", "Filter by sender address or name fragment.")},
            {"subject", property("string", "Filter by subject keyword.")},
            {"limit", property("integer", "Maximum results to return (1–50, default 20).")}},
           {})},
      {.name = "get_email",
       .description =
           "Retrieve the full content of a single email by its JMAP ID (obtained from search_emails).",
       .inputSchema = schema({{"id", property("string", "The JMAP email ID returned by search_emails.")},
                              {"offset", property("integer", "Where to begin in a long text: the number of "
                                                             "characters to skip (default 0).")}},
                             {"id"})},
      {.name = "list_mailboxes",
       .description = "List all Fastmail mailboxes (folders) with total and unread email counts.",
       .inputSchema = schema({}, {})},
      {.name = "open_in_ondrel",
       .description = "Navigate Ondrel to a specific email by its JMAP ID and bring the app to front.",
       .inputSchema = schema(
           {{"id", property("string", "The JMAP email ID to open (from search_emails or get_email).")}},
           {"id"})},
  };
  return tools;
}

} // namespace ondrel::mcp
