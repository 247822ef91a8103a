#include "demo/jmap/JmapApi.h"

#include "base/JsonReader.h"

#include <boost/json.hpp>

#include <algorithm>

namespace ondrel::demo::jmap {

namespace json = boost::json;

namespace {

using Names = std::set<std::string>;

struct Method {
  const char* name;
  bool isMail; // else it is of the user's preferences
  MethodResult (*run)(const JmapContext&, Arguments&);
};

constexpr Method methods[] = {
    {"Email/get", true, emailGet},
    {"Email/query", true, emailQuery},
    {"Email/changes", true, emailChanges},
    {"Email/set", true, emailSet},
    {"Thread/get", true, threadGet},
    {"Mailbox/get", true, mailboxGet},
    {"ClientPreferences/get", false, clientPreferencesGet},
};

// What all calls of a request have in common.
struct Request {
  const JmapContext& context;
  Names capabilities;
  std::string userCapability;
};

JmapAnswer problem(const char* type, const char* detail) {
  return {400,
          {{"type", std::string("urn:ietf:params:jmap:error:") + type}, {"status", 400}, {"detail", detail}}};
}

bool isMethodCall(const base::JsonReader& call) {
  return call.size() == 3 && call[0].string() && call[1].object() && call[2].string();
}

// Replaces each argument "#name" by "name" with what it refers to in the responses so far (RFC 8620, 3.7,
// without "*"). False when a reference can't be followed.
bool resolveReferences(json::object& arguments, const json::array& responses) {
  for (const auto& [key, reference] : json::object(arguments)) {
    if (!key.starts_with('#'))
      continue;
    const base::JsonReader from(reference);
    const auto* callId = from["resultOf"].value();
    const auto* name = from["name"].value();
    const auto path = from["path"].string();
    const auto response = std::ranges::find_if(responses, [&](const json::value& r) {
      return callId && name && r.at(2) == *callId && r.at(0) == *name;
    });
    boost::system::error_code error;
    const auto* found =
        response == responses.end() || !path ? nullptr : response->at(1).find_pointer(*path, error);
    if (!found)
      return false;
    arguments[key.substr(1)] = *found;
    arguments.erase(key);
  }
  return true;
}

MethodResult run(const Request& request, const std::string& name, const json::object& values) {
  const auto* method = std::ranges::find(methods, name, &Method::name);
  if (method == std::end(methods) ||
      !request.capabilities.contains(method->isMail ? mailCapability : request.userCapability))
    return std::unexpected(MethodError{"unknownMethod"});
  const auto account = base::JsonReader(values)["accountId"].string();
  if (!account)
    return std::unexpected(MethodError{"invalidArguments", "accountId is missing or no string"});
  if (*account != mailAccountId && *account != userAccountId)
    return std::unexpected(MethodError{"accountNotFound"});
  if (method->isMail != (*account == mailAccountId))
    return std::unexpected(MethodError{"accountNotSupportedByMethod"});
  Arguments arguments(values);
  return method->run(request.context, arguments);
}

json::array responseTo(const Request& request, const json::array& call, const json::array& responses) {
  const std::string name(call[0].get_string());
  auto arguments = call[1].get_object();
  MethodResult result = std::unexpected(MethodError{"invalidResultReference"});
  if (const auto ordered = request.context.orderedError(name))
    result = std::unexpected(MethodError{*ordered, "A fault on demand."});
  else if (resolveReferences(arguments, responses))
    result = run(request, name, arguments);
  if (result)
    return {name, *std::move(result), call[2]};
  return {"error", {{"type", result.error().type}, {"description", result.error().description}}, call[2]};
}

} // namespace

std::string userCapability(std::uint16_t webPort) {
  return "http://localhost:" + std::to_string(webPort) + "/dev/user";
}

JmapAnswer answerJmap(const JmapContext& context, std::uint16_t webPort, std::string_view contentType,
                      std::string_view body) {
  boost::system::error_code error;
  const auto parsed = json::parse(body, error);
  if (error || !contentType.starts_with("application/json"))
    return problem("notJSON", "The request is no JSON, or doesn't say so.");
  const base::JsonReader reader(parsed);
  const auto* used = reader["using"].value();
  const auto* calls = reader["methodCalls"].array();
  auto capabilities = json::try_value_to<Names>(used ? *used : json::value());
  if (!capabilities || !calls || !std::ranges::all_of(reader["methodCalls"].elements(), isMethodCall))
    return problem("notRequest", "The JSON is no Request object.");
  const Request request{context, *std::move(capabilities), userCapability(webPort)};
  for (const auto& capability : request.capabilities)
    if (capability != coreCapability && capability != mailCapability && capability != request.userCapability)
      return problem("unknownCapability", "The request uses a capability that is not offered here.");
  json::array responses;
  for (const auto& call : *calls)
    responses.push_back(responseTo(request, call.get_array(), responses));
  return {200, {{"methodResponses", std::move(responses)}, {"sessionState", "session-1"}}};
}

} // namespace ondrel::demo::jmap
