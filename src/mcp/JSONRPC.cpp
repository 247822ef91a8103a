#include "mcp/JSONRPC.h"

#include "base/Json.h"
#include "base/JsonReader.h"

#include <boost/json/object.hpp>
#include <boost/json/parse.hpp>

#include <utility>

namespace ondrel::mcp {

namespace {

namespace json = boost::json;

// A number with a fraction, one too large, a boolean: they get the null id, and the request is answered.
std::optional<JSONRPCID> decodedId(const base::JsonReader& id) {
  if (!id.isGiven())
    return std::nullopt;
  if (const auto integer = id.wholeNumber())
    return JSONRPCID(*integer);
  if (auto string = id.string())
    return JSONRPCID(*std::move(string));
  return JSONRPCID(nullptr);
}

JSONValue encodedId(const JSONRPCID& id) {
  return std::visit([](const auto& value) { return JSONValue(value); }, id);
}

} // namespace

std::optional<JSONRPCRequest> JSONRPCRequest::decode(std::string_view body) {
  json::parse_options options;
  options.max_depth = deepest;
  boost::system::error_code failure;
  const auto value = json::parse(body, failure, {}, options);
  const base::JsonReader request(value);
  auto method = request["method"].string();
  if (failure || !request["jsonrpc"].string() || !method)
    return std::nullopt;
  const auto params = request["params"];
  return JSONRPCRequest{.id = decodedId(request["id"]),
                        .method = *std::move(method),
                        .params = params.isGiven() ? std::optional(*params.value()) : std::nullopt};
}

std::string JSONRPCResponse::encoded() const {
  json::object response{{"jsonrpc", "2.0"}};
  if (id)
    response["id"] = encodedId(*id);
  if (result)
    response["result"] = *result;
  else
    response["error"] = {{"code", result.error().code}, {"message", result.error().message}};
  return base::jsonText(response);
}

} // namespace ondrel::mcp
