#include "mcp/tools/MCPTool.h"

#include "jmap/JMAPReading.h"

#include <boost/json/array.hpp>

#include <utility>

namespace ondrel::mcp::tools {

namespace json = boost::json;

bool ToolArgument::isGiven(const json::object& arguments) const {
  return type == Type::string ? jmap::stringMember(arguments, name).has_value()
                              : jmap::integerMember(arguments, name).has_value();
}

json::object MCPTool::inputSchema() const {
  json::object properties;
  json::array required;
  for (const auto& argument : arguments) {
    const auto* type = argument.type == ToolArgument::Type::string ? "string" : "integer";
    properties[argument.name] = {{"type", type}, {"description", argument.description}};
    if (argument.isRequired)
      required.emplace_back(argument.name);
  }
  return {{"type", "object"}, {"properties", std::move(properties)}, {"required", std::move(required)}};
}

} // namespace ondrel::mcp::tools
