#include "mcp/tools/MCPTool.h"

#include "base/JsonReader.h"

#include <boost/json/array.hpp>

#include <utility>

namespace ondrel::mcp::tools {

namespace json = boost::json;

bool ToolArgument::isGiven(const json::object& arguments) const {
  const auto value = base::JsonReader(arguments)[name];
  return type == Type::string ? value.string().has_value() : value.wholeNumber().has_value();
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
