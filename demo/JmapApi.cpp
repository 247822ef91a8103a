#include "demo/JmapApi.h"

#include "demo/Arguments.h"
#include "demo/ClientPreferences.h"
#include "demo/EmailGet.h"
#include "demo/EmailQuery.h"
#include "demo/EmailSet.h"
#include "demo/JmapSessionResource.h"
#include "demo/ListMethods.h"
#include "demo/ResultReference.h"

#include <algorithm>

namespace ondrel::demo {

namespace json = boost::json;

namespace {

enum class Owner { nobody, mail, user };

struct Method {
  const char* name;
  Owner owner; // whose account it works on, and so the capability that it belongs to
  MethodResult (*run)(const JmapContext&, Arguments&);
};

constexpr Method methods[] = {
    {"Email/get", Owner::mail, emailGet},
    {"Email/query", Owner::mail, emailQuery},
    {"Email/changes", Owner::mail, emailChanges},
    {"Email/set", Owner::mail, emailSet},
    {"Thread/get", Owner::mail, threadGet},
    {"Thread/changes", Owner::mail, threadChanges},
    {"Mailbox/get", Owner::mail, mailboxGet},
    {"Mailbox/changes", Owner::mail, mailboxChanges},
    {"ClientPreferences/get", Owner::user, clientPreferencesGet},
};

JmapAnswer problem(const char* type, const char* detail) {
  return {400,
          {{"type", std::string("urn:ietf:params:jmap:error:") + type}, {"status", 400}, {"detail", detail}}};
}

bool isMethodCall(const json::value& call) {
  const auto* array = call.if_array();
  return array && array->size() == 3 && (*array)[0].is_string() && (*array)[1].is_object() &&
         (*array)[2].is_string();
}

} // namespace

JmapAnswer JmapApi::answer(std::string_view contentType, std::string_view body) const {
  if (body.size() > mostBytesInRequest) {
    auto answer = problem("limit", "The request is too large.");
    answer.body["limit"] = "maxSizeRequest";
    return answer;
  }
  boost::system::error_code error;
  const auto parsed = json::parse(body, error);
  if (error || !contentType.starts_with("application/json"))
    return problem("notJSON", "The request is no JSON, or doesn't say so.");
  const auto* request = parsed.if_object();
  const auto* usingValue = request ? request->if_contains("using") : nullptr;
  const auto* callsValue = request ? request->if_contains("methodCalls") : nullptr;
  const auto* used = usingValue ? usingValue->if_array() : nullptr;
  const auto* calls = callsValue ? callsValue->if_array() : nullptr;
  if (!used || !calls || !std::ranges::all_of(*used, [](const json::value& v) { return v.is_string(); }) ||
      !std::ranges::all_of(*calls, isMethodCall)) {
    return problem("notRequest", "The JSON is no Request object.");
  }
  if (calls->size() > mostCallsInRequest) {
    auto answer = problem("limit", "Too many calls.");
    answer.body["limit"] = "maxCallsInRequest";
    return answer;
  }
  std::vector<std::string> capabilities;
  for (const auto& value : *used) {
    const std::string capability(value.get_string());
    if (capability != coreCapability && capability != mailCapability && capability != userCapability_)
      return problem("unknownCapability", "The request uses a capability that is not offered here.");
    capabilities.push_back(capability);
  }

  json::array responses;
  for (const auto& methodCall : *calls)
    responses.push_back(call(methodCall.get_array(), capabilities, responses));
  return {200, {{"methodResponses", std::move(responses)}, {"sessionState", sessionState}}};
}

json::array JmapApi::call(const json::array& methodCall, const std::vector<std::string>& capabilities,
                          const json::array& responses) const {
  const std::string name(methodCall[0].get_string());
  auto arguments = methodCall[1].get_object();
  MethodResult result = std::unexpected(MethodError{"invalidResultReference"});
  if (const auto ordered = context_.faults.take(name))
    result = std::unexpected(MethodError{*ordered, "A fault on demand."});
  else if (resolveReferences(arguments, responses))
    result = run(name, arguments, capabilities);
  if (result)
    return {name, std::move(*result), methodCall[2]};
  json::object error{{"type", result.error().type}};
  if (!result.error().description.empty())
    error["description"] = result.error().description;
  return {"error", std::move(error), methodCall[2]};
}

MethodResult JmapApi::run(const std::string& name, const json::object& values,
                          const std::vector<std::string>& capabilities) const {
  const auto offers = [&](const std::string& capability) {
    return std::ranges::find(capabilities, capability) != capabilities.end();
  };
  if (name == "Core/echo" && offers(coreCapability))
    return values;
  const auto* method = std::ranges::find(methods, name, &Method::name);
  if (method == std::end(methods) ||
      !offers(method->owner == Owner::mail ? std::string(mailCapability) : userCapability_)) {
    return std::unexpected(MethodError{"unknownMethod"});
  }
  const auto* account = values.if_contains("accountId");
  if (!account || !account->is_string())
    return std::unexpected(MethodError{"invalidArguments", "accountId is missing or no string"});
  const bool isMail = account->get_string() == mailAccountId;
  if (!isMail && account->get_string() != userAccountId)
    return std::unexpected(MethodError{"accountNotFound"});
  if (isMail != (method->owner == Owner::mail))
    return std::unexpected(MethodError{"accountNotSupportedByMethod"});
  Arguments arguments(values);
  return method->run(context_, arguments);
}

} // namespace ondrel::demo
