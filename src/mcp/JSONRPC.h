#pragma once

#include <boost/json/value.hpp>

#include <cstddef>
#include <cstdint>
#include <expected>
#include <optional>
#include <string>
#include <string_view>
#include <variant>

namespace ondrel::mcp {

using JSONValue = boost::json::value;

// Null is an id too: it stands for one of a type that JSON-RPC does not know, and is answered with null.
using JSONRPCID = std::variant<std::nullptr_t, std::int64_t, std::string>;

// A request of JSON-RPC 2.0; without an id a notification, which is never answered. Decoding is forgiving
// where that harms nobody: "jsonrpc" may have any text, unknown members are skipped.
struct JSONRPCRequest {
  // Of arrays and objects within each other.
  static constexpr std::size_t deepest = 64;

  std::optional<JSONRPCID> id; // absent for JSON null as well
  std::string method;
  std::optional<JSONValue> params;

  // Absent when the text is no JSON (RFC 8259, in UTF-8) or no single request. Of members with the same name
  // the last one counts.
  static std::optional<JSONRPCRequest> decode(std::string_view body);
};

struct JSONRPCError {
  static constexpr int parseError = -32700;
  static constexpr int methodNotFound = -32601;
  static constexpr int invalidParams = -32602;

  int code = 0;
  std::string message;
};

struct JSONRPCResponse {
  std::optional<JSONRPCID> id; // absent only where the request could not be read
  std::expected<JSONValue, JSONRPCError> result;

  std::string encoded() const;
};

} // namespace ondrel::mcp
