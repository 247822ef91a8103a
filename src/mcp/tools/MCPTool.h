#pragma once

#include "async/Task.h"

#include <boost/json/object.hpp>

#include <expected>
#include <functional>
#include <span>
#include <string>
#include <string_view>

namespace ondrel::jmap {
class MailQueries;
}

namespace ondrel::platform {
class TextFormatting;
}

namespace ondrel::mcp::tools {

// What the tools work on. All outlive it, and it outlives their tasks.
struct ToolServices {
  jmap::MailQueries& mail;
  const platform::TextFormatting& formatting;
  std::function<void(const std::string& url)> openURL; // shows a message in a window
  std::function<void()> activate;                      // the program, in front of all others
};

struct ToolArgument {
  enum class Type { string, integer };

  std::string_view name;
  Type type = Type::string;
  std::string_view description;
  bool isRequired = false;

  // With a value of its type.
  bool isGiven(const boost::json::object& arguments) const;
};

// A text for the assistant. The error is for the assistant and the person behind it.
using ToolOutcome = std::expected<std::string, std::string>;

// A tool as an assistant is told of it, and what it does. The texts are what an assistant decides by.
struct MCPTool {
  std::string_view name;
  std::string_view description;
  std::span<const ToolArgument> arguments;
  // Called when all required arguments are given. Others of another type count as absent, and a tool skips
  // what it doesn't know. Calls may run side by side. Main thread only.
  async::Task<ToolOutcome> (*run)(ToolServices& services, boost::json::object arguments);

  // JSON Schema of the arguments.
  boost::json::object inputSchema() const;
};

} // namespace ondrel::mcp::tools
