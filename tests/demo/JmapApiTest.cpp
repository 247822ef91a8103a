#include "JmapFixture.h"

#include <gmock/gmock.h>

namespace ondrel::demo {

namespace json = boost::json;
using testing::HasSubstr;
using testing::StartsWith;

class JmapApiTest : public JmapFixture {};

TEST_F(JmapApiTest, WantsAValidToken) {
  for (const char* path : {"/jmap/session", "/jmap/api/", "/jmap/event/?types=*", "/jmap/download/u/b/n"}) {
    for (const auto& field :
         std::vector<std::string>{"", "Bearer ", "Bearer other", "Basic " + token_, token_}) {
      const auto answer = fetch({web(path), "GET", {{"Authorization", field}}});
      EXPECT_EQ(answer.status, 401u) << path << " " << field;
    }
    EXPECT_EQ(fetch({web(path), "GET", {{"Cookie", signIn()}}}).status, 401u) << "a cookie is no token";
  }
  EXPECT_EQ(get("/jmap/session").status, 200u);
  EXPECT_EQ(get("/jmap/session", "usercontent.localhost").status, 404u);

  order("expire-token");
  EXPECT_EQ(get("/jmap/session").status, 401u);
  token_ = newToken();
  EXPECT_EQ(get("/jmap/session").status, 200u);
  order("sign-out");
  EXPECT_EQ(get("/jmap/session").status, 401u);
}

TEST_F(JmapApiTest, GivesTheTokenToSignedInPagesOnly) {
  EXPECT_EQ(fetch({web("/data/token")}).status, 401u);
  const auto cookie = signIn();
  EXPECT_EQ(data("token", cookie).at("accessToken"), json::value(token_));
  order("expire-token");
  const auto renewed = data("token", cookie).at("accessToken");
  EXPECT_NE(renewed, json::value(token_));
  EXPECT_EQ(data("token", cookie).at("accessToken"), renewed);
  fetch({web("/sign-out"), "GET", {{"Cookie", cookie}}});
  token_ = std::string(renewed.as_string());
  EXPECT_EQ(get("/jmap/session").status, 401u);
}

TEST_F(JmapApiTest, DescribesItselfForTheHostThatIsAsked) {
  for (const char* host : {"localhost", "beta.localhost"}) {
    const auto session = json::parse(get("/jmap/session", host).body);
    EXPECT_EQ(session.at("apiUrl"), json::value(web("/jmap/api/", host)));
    EXPECT_EQ(session.at("eventSourceUrl"),
              json::value(web("/jmap/event/?types={types}&closeafter={closeafter}&ping={ping}", host)));
    EXPECT_EQ(session.at("downloadUrl"),
              json::value(web("/jmap/download/{accountId}/{blobId}/{name}?type={type}", host)));
    const auto& primary = session.at("primaryAccounts").as_object();
    EXPECT_EQ(primary.at("urn:ietf:params:jmap:mail"), mail);
    EXPECT_EQ(primary.at(userCapability()), user);
    for (const auto& [capability, account] : primary) {
      EXPECT_TRUE(session.at("capabilities").as_object().contains(capability));
      EXPECT_TRUE(session.at("accounts").as_object().contains(account.as_string()));
    }
  }
}

TEST_F(JmapApiTest, RefusesWholeRequestsWithProblemDetails) {
  const struct {
    std::string body;
    const char* type;
    const char* contentType = "application/json";
  } cases[] = {
      {"", "notJSON"},
      {"{", "notJSON"},
      {"{\"using\":[\"\xff\"]}", "notJSON"},
      {std::string(100, '[') + std::string(100, ']'), "notJSON"},
      {request("[]"), "notJSON", "text/plain"},
      {"[]", "notRequest"},
      {R"({"using": []})", "notRequest"},
      {R"({"using": {}, "methodCalls": []})", "notRequest"},
      {R"({"using": [1], "methodCalls": []})", "notRequest"},
      {request(R"([["Core/echo", {}]])"), "notRequest"},
      {request(R"([["Core/echo", [], "0"]])"), "notRequest"},
      {request(R"([["Core/echo", {}, 0]])"), "notRequest"},
      {R"({"using": ["urn:ietf:params:jmap:contacts"], "methodCalls": []})", "unknownCapability"},
      {std::string(10'000'001, ' '), "limit"},
  };
  for (const auto& [body, type, contentType] : cases) {
    const auto answer = post(body, contentType);
    EXPECT_EQ(answer.status, 400u) << body.substr(0, 100);
    EXPECT_EQ(answer.headers.at("content-type"), "application/problem+json");
    EXPECT_EQ(json::parse(answer.body).at("type"),
              json::value(std::string("urn:ietf:params:jmap:error:") + type))
        << body.substr(0, 100);
  }
  EXPECT_EQ(get("/jmap/api/").status, 405u);
}

TEST_F(JmapApiTest, EndsSingleCallsWithMethodErrors) {
  const struct {
    const char* method;
    const char* arguments;
    const char* type;
    const char* account = mail;
  } cases[] = {
      {"Email/copy", "{}", "unknownMethod"},
      {"Mailbox/get", "{}", "accountNotFound", "u1"},
      {"Mailbox/get", "{}", "accountNotSupportedByMethod", user},
      {"ClientPreferences/get", "{}", "accountNotSupportedByMethod", mail},
      {"Mailbox/get", R"({"ids": "inbox"})", "invalidArguments"},
      {"Mailbox/get", R"({"ids": [1]})", "invalidArguments"},
      {"Mailbox/get", R"({"properties": ["size"]})", "invalidArguments"},
      {"Mailbox/get", R"({"id": ["inbox"]})", "invalidArguments"},
      {"Email/get", R"({"ids": null})", "requestTooLarge"},
      {"Email/get", R"({"ids": [], "properties": ["header:To:asColour"]})", "invalidArguments"},
      {"Email/get", R"({"ids": [], "fetchTextBodyValues": 1})", "invalidArguments"},
      {"Email/query", R"({"limit": -1})", "invalidArguments"},
      {"Email/query", R"({"limit": "1"})", "invalidArguments"},
      {"Email/query", R"({"filter": []})", "invalidArguments"},
      {"Email/query", R"({"filter": {"after": "yesterday"}})", "invalidArguments"},
      {"Email/query", R"({"filter": {"after": "2025-02-30T00:00:00Z"}})", "invalidArguments"},
      {"Email/query", R"({"filter": {"before": "2025-11-20"}})", "invalidArguments"},
      {"Email/query", R"({"filter": {"inMailbox": "none"}})", "invalidArguments"},
      {"Email/query", R"({"filter": {"header": []}})", "invalidArguments"},
      {"Email/query", R"({"filter": {"hasAttachment": "yes"}})", "invalidArguments"},
      {"Email/query", R"({"filter": {"operator": "XOR", "conditions": []}})", "invalidArguments"},
      {"Email/query", R"({"filter": {"operator": "AND", "conditions": [1]}})", "invalidArguments"},
      {"Email/query", R"({"filter": {"colour": "red"}})", "unsupportedFilter"},
      {"Email/query", R"({"sort": [{"property": "colour"}]})", "unsupportedSort"},
      {"Email/query", R"({"anchor": "M0"})", "anchorNotFound"},
      {"Email/changes", "{}", "invalidArguments"},
      {"Email/changes", R"({"sinceState": "0", "maxChanges": 0})", "invalidArguments"},
      {"Email/changes", R"({"sinceState": "0"})", "cannotCalculateChanges"},
      {"Email/set", R"({"ifInState": "0"})", "stateMismatch"},
      {"Email/set", R"({"update": []})", "invalidArguments"},
      {"Email/get", R"({"#ids": {"resultOf": "c9", "name": "Email/query", "path": "/ids"}})",
       "invalidResultReference"},
      {"Email/get", R"({"#ids": "c9"})", "invalidResultReference"},
  };
  for (const auto& [method, arguments, type, account] : cases)
    EXPECT_EQ(error(method, arguments, account), type) << method << " " << arguments;
  EXPECT_EQ(text(calls(R"([["Mailbox/get", {}, "x"]])").at(0).at(1).at("type")), "\"invalidArguments\"");
  // A capability that isn't used brings no methods.
  const auto withoutMail = post(R"({"using": ["urn:ietf:params:jmap:core"], "methodCalls": [
      ["Core/echo", {"a": null}, "e"], ["Mailbox/get", {"accountId": "u12345678"}, "m"]]})");
  EXPECT_EQ(text(json::parse(withoutMail.body).at("methodResponses")),
            R"([["Core/echo",{"a":null},"e"],["error",{"type":"unknownMethod"},"m"]])");
}

TEST_F(JmapApiTest, FollowsBackReferences) {
  const auto responses = calls(R"([
      ["Email/query", {"accountId": "u12345678", "filter": {"inMailbox": "inbox"}, "limit": 2, "collapseThreads": true,
                       "sort": [{"property": "receivedAt", "isAscending": false}]}, "q"],
      ["Email/get", {"accountId": "u12345678", "properties": ["threadId"],
                     "#ids": {"resultOf": "q", "name": "Email/query", "path": "/ids"}}, "g"],
      ["Thread/get", {"accountId": "u12345678",
                      "#ids": {"resultOf": "g", "name": "Email/get", "path": "/list/*/threadId"}}, "t"],
      ["Email/get", {"accountId": "u12345678", "properties": ["id"],
                     "#ids": {"resultOf": "t", "name": "Thread/get", "path": "/list/*/emailIds"}}, "h"],
      ["Email/get", {"accountId": "u12345678", "properties": ["id"],
                     "#ids": {"resultOf": "t", "name": "Thread/get", "path": "/list/0/emailIds"}}, "i"],
      ["Email/get", {"accountId": "u12345678", "ids": [],
                     "#ids": {"resultOf": "q", "name": "Email/query", "path": "/ids"}}, "both"],
      ["Email/get", {"accountId": "u12345678",
                     "#ids": {"resultOf": "q", "name": "Email/get", "path": "/ids"}}, "otherName"],
      ["Email/get", {"accountId": "u12345678",
                     "#ids": {"resultOf": "q", "name": "Email/query", "path": "/ids/7"}}, "nowhere"]])");
  EXPECT_EQ(text(responses[0].at(1).at("ids")), R"(["M4","M28"])");
  EXPECT_EQ(text(responses[1].at(1).at("list")),
            R"([{"id":"M4","threadId":"T1"},{"id":"M28","threadId":"T2"}])");
  EXPECT_EQ(responses[2].at(1).at("list").as_array().size(), 2u);
  EXPECT_EQ(responses[3].at(1).at("list").as_array().size(), 4u + 24u);
  EXPECT_EQ(text(responses[4].at(1).at("list")), R"([{"id":"M1"},{"id":"M2"},{"id":"M3"},{"id":"M4"}])");
  for (std::size_t i = 5; i < 8; ++i)
    EXPECT_EQ(responses[i].at(1).at("type"), "invalidResultReference") << text(responses[i].at(2));
}

TEST_F(JmapApiTest, TellsTheLabelsMode) {
  EXPECT_EQ(text(call("ClientPreferences/get", R"({"ids": null})", user).second.at("list")),
            R"([{"id":"singleton","inLabelsMode":true}])");
  order("labels-mode", R"({"on": false})");
  EXPECT_EQ(text(call("ClientPreferences/get", R"({"ids": null})", user).second.at("list")),
            R"([{"id":"singleton","inLabelsMode":false}])");
}

TEST_F(JmapApiTest, GivesFilesToDownload) {
  const std::string account = "/jmap/download/" + std::string(mail);
  const auto part =
      answer("Email/get", R"({"ids": ["M4"], "properties": ["attachments", "blobId", "textBody"]})")
          .at("list")
          .at(0);
  const std::string pdf(part.at("attachments").at(0).at("blobId").as_string());
  const auto file = get(account + "/" + pdf + "/My%2Fplan.pdf?type=application/pdf");
  EXPECT_EQ(file.headers.at("content-type"), "application/pdf");
  EXPECT_EQ(file.headers.at("content-disposition"), "attachment; filename*=UTF-8''My%2Fplan.pdf");
  EXPECT_THAT(file.body, StartsWith("%PDF-"));
  EXPECT_EQ(json::value(file.body.size()), part.at("attachments").at(0).at("size"));
  EXPECT_THAT(get(account + "/" + std::string(part.at("blobId").as_string()) + "/m.eml").body,
              HasSubstr("Message-ID: <M4@mail.example.org>"));
  EXPECT_THAT(
      get(account + "/" + std::string(part.at("textBody").at(0).at("blobId").as_string()) + "/t").body,
      StartsWith("Dear both,\n"));

  EXPECT_EQ(get(account + "/none/a").status, 404u);
  EXPECT_EQ(get(account + "/M4-other/a").status, 404u);
  EXPECT_EQ(get("/jmap/download/" + std::string(user) + "/" + pdf + "/a").status, 404u);
  EXPECT_EQ(get(account + "/" + pdf + "/a?type=text/html%0D%0ASet-Cookie:%20a=b").status, 400u);
}

} // namespace ondrel::demo
