#include "demo/JmapSessionResource.h"

#include "demo/JmapMethod.h"
#include "demo/SampleMail.h"

namespace ondrel::demo {

namespace json = boost::json;

namespace {

json::object coreLimits() {
  return {{"maxSizeUpload", 50'000'000},
          {"maxConcurrentUpload", 4},
          {"maxSizeRequest", mostBytesInRequest},
          {"maxConcurrentRequests", 8},
          {"maxCallsInRequest", mostCallsInRequest},
          {"maxObjectsInGet", mostObjectsInGet},
          {"maxObjectsInSet", mostObjectsInSet},
          {"collationAlgorithms", json::array{"i;ascii-casemap"}}};
}

json::object mailLimits() {
  return {{"maxMailboxesPerEmail", nullptr},
          {"maxMailboxDepth", 1},
          {"maxSizeMailboxName", 200},
          {"maxSizeAttachmentsPerEmail", 5'000'000},
          {"emailQuerySortOptions", json::array{"receivedAt", "sentAt", "size", "from", "subject"}},
          {"mayCreateTopLevelMailbox", false}};
}

json::object account(const std::string& name, json::object capabilities) {
  return {{"name", name},
          {"isPersonal", true},
          {"isReadOnly", false},
          {"accountCapabilities", std::move(capabilities)}};
}

} // namespace

json::object sessionResource(const std::string& origin, const std::string& userCapability) {
  const auto user = demoUser().email;
  return {
      {"capabilities", json::object{{coreCapability, coreLimits()},
                                    {mailCapability, json::object()},
                                    {userCapability, json::object()}}},
      {"accounts",
       json::object{
           {mailAccountId, account(user, {{coreCapability, json::object()}, {mailCapability, mailLimits()}})},
           {userAccountId, account(user + " (preferences)", {{userCapability, json::object()}})}}},
      {"primaryAccounts", json::object{{coreCapability, mailAccountId},
                                       {mailCapability, mailAccountId},
                                       {userCapability, userAccountId}}},
      {"username", user},
      {"apiUrl", origin + "/jmap/api/"},
      {"downloadUrl", origin + "/jmap/download/{accountId}/{blobId}/{name}?type={type}"},
      {"uploadUrl", origin + "/jmap/upload/{accountId}/"},
      {"eventSourceUrl", origin + "/jmap/event/?types={types}&closeafter={closeafter}&ping={ping}"},
      {"state", sessionState}};
}

} // namespace ondrel::demo
