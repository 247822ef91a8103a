#include "mcp/JSONRPC.h"

#include "base/Json.h"
#include "jmap/JMAPReading.h"

#include <boost/json/object.hpp>
#include <boost/json/parse.hpp>

#include <utility>

namespace ondrel::mcp {

namespace {

namespace json = boost::json;

const JSONValue* presentMember(const json::object& object, std::string_view key) {
  const auto* value = object.if_contains(key);
  return value && !value->is_null() ? value : nullptr;
}

// A number with a fraction, one too large, a boolean: they get the null id, and the request is answered.
std::optional<JSONRPCID> decodedId(const json::object& request) {
  if (!presentMember(request, "id"))
    return std::nullopt;
  if (const auto integer = jmap::integerMember(request, "id"))
    return JSONRPCID(*integer);
  if (auto string = jmap::stringMember(request, "id"))
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
  const auto* object = failure ? nullptr : value.if_object();
  if (!object || !jmap::stringMember(*object, "jsonrpc"))
    return std::nullopt;
  auto method = jmap::stringMember(*object, "method");
  if (!method)
    return std::nullopt;
  const auto* params = presentMember(*object, "params");
  return JSONRPCRequest{.id = decodedId(*object),
                        .method = *std::move(method),
                        .params = params ? std::optional(*params) : std::nullopt};
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
