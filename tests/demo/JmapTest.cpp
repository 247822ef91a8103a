#include "ServiceFixture.h"

namespace ondrel::demo {

class JmapTest : public ServiceFixture {
 protected:
  std::string delivered(const std::string& order) {
    return std::string(deliver(order).at("emailId").as_string());
  }
  std::string state() { return text(answer("Email/get", R"({"ids": []})").at("state")); }
  json::value changes(const std::string& since, const std::string& more = "") {
    return answer("Email/changes", R"({"sinceState": )" + since + more + "}");
  }
};

TEST_F(JmapTest, WantsAValidToken) {
  for (const char* path : {"/jmap/session", "/jmap/api/", "/jmap/event/?types=Email", "/jmap/download/u/b/n"})
    for (const auto& headers : {std::string(), std::string("Authorization: Bearer other\r\n"), cookie_})
      EXPECT_EQ(get(path, headers).status, path == std::string("/jmap/api/") ? 405U : 401U)
          << path << headers;
  EXPECT_EQ(get("/jmap/session", token_).status, 200U);
  EXPECT_EQ(json::parse(page("/data/token").body).at("accessToken"), json::value(token_.substr(22, 41)));
  for (const char* name : {"expire-token", "sign-out"}) {
    order(name);
    EXPECT_EQ(get("/jmap/session", token_).status, 401U) << name;
    token_ = newToken();
    EXPECT_EQ(get("/jmap/session", token_).status, 200U) << name;
  }
}

TEST_F(JmapTest, DescribesItselfForTheHostThatIsAsked) {
  for (const std::string host : {"localhost", "beta.localhost"}) {
    const auto session = json::parse(get("/jmap/session", token_, host).body);
    const auto base = fmt::format("http://{}:{}/jmap/", host, service_.webPort());
    EXPECT_EQ(session.at("apiUrl"), json::value(base + "api/"));
    EXPECT_EQ(session.at("eventSourceUrl"),
              json::value(base + "event/?types={types}&closeafter={closeafter}&ping={ping}"));
    EXPECT_EQ(session.at("primaryAccounts").at("urn:ietf:params:jmap:mail"), mail);
    for (const auto& [capability, account] : session.at("primaryAccounts").as_object())
      EXPECT_TRUE(session.at("accounts").as_object().contains(account.as_string())) << capability;
  }
}

TEST_F(JmapTest, RefusesWholeRequestsWithProblemDetails) {
  const struct {
    std::string body;
    const char* type = nullptr;
    const char* contentType = "application/json";
  } cases[] = {
      {"{", "notJSON"},
      {"{\"using\":[\"\xff\"]}", "notJSON"},
      {request("[]"), "notJSON", "text/plain"},
      {"[]", "notRequest"},
      {R"({"using": []})", "notRequest"},
      {R"({"using": [1], "methodCalls": []})", "notRequest"},
      {request(R"([["Email/get", {}]])"), "notRequest"},
      {request(R"([["Email/get", [], "0"]])"), "notRequest"},
      {R"({"using": ["urn:ietf:params:jmap:contacts"], "methodCalls": []})", "unknownCapability"},
  };
  for (const auto& [body, type, contentType] : cases) {
    const auto answer = post(body, contentType);
    EXPECT_EQ(answer.status, 400U) << body;
    EXPECT_THAT(answer.body, HasSubstr(std::string("urn:ietf:params:jmap:error:") + type + "\"")) << body;
  }
}

TEST_F(JmapTest, EndsSingleCallsWithMethodErrors) {
  const struct {
    const char* method = nullptr;
    const char* arguments = nullptr;
    const char* type = nullptr;
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
      {"Email/get", "{}", "requestTooLarge"},
      {"Email/get", R"({"ids": [], "fetchTextBodyValues": 1})", "invalidArguments"},
      {"Email/get", R"({"ids": [], "fetchAllBodyValues": true})", "invalidArguments"},
      {"Email/query", R"({"limit": -1})", "invalidArguments"},
      {"Email/query", R"({"limit": "1"})", "invalidArguments"},
      {"Email/query", R"({"filter": []})", "invalidArguments"},
      {"Email/query", R"({"filter": {"after": "yesterday"}})", "invalidArguments"},
      {"Email/query", R"({"filter": {"after": "2025-02-30T00:00:00Z"}})", "invalidArguments"},
      {"Email/query", R"({"filter": {"before": "2025-11-20"}})", "invalidArguments"},
      {"Email/query", R"({"filter": {"hasAttachment": "yes"}})", "invalidArguments"},
      {"Email/query", R"({"filter": {"operator": "XOR", "conditions": []}})", "invalidArguments"},
      {"Email/query", R"({"filter": {"operator": "AND", "conditions": [1]}})", "invalidArguments"},
      {"Email/query", R"({"filter": {"colour": "red"}})", "unsupportedFilter"},
      {"Email/query", R"({"sort": [{"property": "colour"}]})", "unsupportedSort"},
      {"Email/changes", "{}", "invalidArguments"},
      {"Email/changes", R"({"sinceState": "0", "maxChanges": 0})", "invalidArguments"},
      {"Email/changes", R"({"sinceState": "0"})", "cannotCalculateChanges"},
      {"Email/set", R"({"update": []})", "invalidArguments"},
      {"Email/set", R"({"destroy": ["M1"]})", "invalidArguments"},
      {"Email/get", R"({"#ids": {"resultOf": "c9", "name": "Email/query", "path": "/ids"}})",
       "invalidResultReference"},
      {"Email/get", R"({"#ids": "c9"})", "invalidResultReference"},
  };
  for (const auto& [method, arguments, type, account] : cases) {
    const auto response = call(method, arguments, account);
    EXPECT_EQ(response.at(0), "error") << method << " " << arguments;
    EXPECT_EQ(response.at(1).at("type"), type) << method << " " << arguments;
  }
  const auto withoutMail = post(R"({"using": ["urn:ietf:params:jmap:core"],
                                    "methodCalls": [["Mailbox/get", {"accountId": "u12345678"}, "m"]]})");
  EXPECT_THAT(withoutMail.body, HasSubstr("unknownMethod"))
      << "a capability that isn't used brings no methods";
}

TEST_F(JmapTest, GivesWhatClientsAskFor) {
  const auto responses = calls(R"([
      ["Email/query", {"accountId": "u12345678", "sort": [{"property": "receivedAt", "isAscending": false}],
                       "position": 1, "limit": 1, "calculateTotal": true}, "q"],
      ["Email/get", {"accountId": "u12345678", "properties": ["threadId"],
                     "#ids": {"resultOf": "q", "name": "Email/query", "path": "/ids"}}, "g"],
      ["Email/get", {"accountId": "u12345678",
                     "#ids": {"resultOf": "q", "name": "Email/get", "path": "/ids"}}, "n"],
      ["Thread/get", {"accountId": "u12345678", "ids": ["T4", "T0", "T1", "T4"]}, "t"],
      ["Mailbox/get", {"accountId": "u12345678", "ids": ["house", "House & garden"], "properties": ["name"]}, "m"],
      ["ClientPreferences/get", {"accountId": "u87654321", "ids": null}, "c"]])");
  EXPECT_GT(responses[0].at(1).at("total").to_number<int>(), 3000);
  EXPECT_EQ(text(responses[1].at(1).at("list")), R"([{"id":"M3","threadId":"T1"}])");
  EXPECT_EQ(responses[2].at(1).at("type"), "invalidResultReference") << "the result of another method";
  EXPECT_EQ(text(responses[3].at(1).at("list")),
            R"([{"id":"T4","emailIds":["M31"]},{"id":"T1","emailIds":["M1","M2","M3","M4"]}])")
      << "in the order of the ids, and each once";
  EXPECT_EQ(text(responses[3].at(1).at("notFound")), R"(["T0"])");
  EXPECT_EQ(text(responses[4].at(1).at("list")), R"([{"id":"house","name":"House & garden"}])");
  EXPECT_EQ(text(responses[5].at(1).at("list")), R"([{"id":"singleton","inLabelsMode":true}])");

  EXPECT_EQ(
      email("M4", R"(["threadId", "mailboxIds", "keywords", "messageId", "from", "subject", "receivedAt"])"),
      R"({"id":"M4","threadId":"T1","mailboxIds":{"inbox":true},"keywords":{},)"
      R"("messageId":["M4@mail.example.org"],)"
      R"("from":[{"name":"Nadia Okafor","email":"nadia.okafor@example.org"}],)"
      R"("subject":"Plans for the spring workshop","receivedAt":"2025-11-20T09:41:00Z"})");
  const auto id = delivered(R"({"text": "Grüße & so"})");
  EXPECT_EQ(
      email(id, R"(["textBody", "bodyValues"])"),
      R"({"id":")" + id +
          R"(","textBody":[{"partId":"1","type":"text/plain","charset":"utf-8","size":13}],)"
          R"("bodyValues":{"1":{"value":"Grüße & so\n","isEncodingProblem":false,"isTruncated":false}}})");
  EXPECT_THAT(email("M29", R"(["textBody"])"), HasSubstr("text/html")) << "in a frame it is HTML alone";

  const auto pdf = json::parse(email("M4", R"(["attachments"])")).at("attachments").at(0);
  EXPECT_EQ(pdf.at("name"), "Programme.pdf");
  const auto file = get(fmt::format("/jmap/download/{}/{}/My%2Fplan.pdf?type=application/pdf", mail,
                                    std::string_view(pdf.at("blobId").as_string())),
                        token_);
  EXPECT_THAT(file.head, HasSubstr("attachment; filename*=UTF-8''My%2Fplan.pdf"));
  EXPECT_EQ(json::value(file.body.size()), pdf.at("size"));
}

TEST_F(JmapTest, FindsWhatTheFilterDescribes) {
  const auto a = delivered(R"({"subject": "Zebra crossing", "fromName": "Émile Zola", "mailbox": "house"})");
  const auto b =
      delivered(R"({"subject": "A ZEBRA again", "fromEmail": "kofi@zebra.example", "mailbox": "Spam"})");
  const std::tuple<std::string, bool, bool> cases[] = {
      {R"({"subject": "crossing zebra"})", true, false},
      {R"({"subject": "zebra"})", true, true},
      {R"({"from": "émile"})", true, false},
      {R"({"from": "kofi@zebra"})", false, true},
      {R"({"subject": "zebra", "hasAttachment": true})", false, false},
      {R"({"subject": "zebra", "inMailboxOtherThan": ["junk"]})", true, false},
      {R"({"subject": "zebra", "before": "2026-01-02T00:00:00Z"})", false, false},
      {R"({"subject": "zebra", "after": "2026-01-02T00:00:00.000Z"})", true, true},
      {R"({"header": ["Message-ID", ")" + b + R"(@mail.example.org"]})", false, true},
      {R"({"operator": "OR", "conditions": [{"subject": "crossing"}, {"from": "kofi"}]})", true, true},
      {R"({"operator": "AND", "conditions": [{"subject": "zebra"}, {"from": "kofi"}]})", false, true},
  };
  for (const auto& [filter, hasA, hasB] : cases) {
    const auto ids = answer("Email/query", R"({"filter": )" + filter + "}").at("ids").as_array();
    EXPECT_EQ(std::ranges::count(ids, json::value(a)), hasA ? 1 : 0) << filter;
    EXPECT_EQ(std::ranges::count(ids, json::value(b)), hasB ? 1 : 0) << filter;
  }
}

TEST_F(JmapTest, ChangesMailboxesAndKeywords) {
  const auto id = delivered("{}");
  const auto set = [&](const std::string& patch) {
    return answer("Email/set", R"({"update": {")" + id + R"(": )" + patch + "}}");
  };
  const auto shown = [&] { return email(id, R"(["mailboxIds", "keywords"])"); };
  const auto before = shown();
  const std::pair<const char*, const char*> refused[] = {
      {"[]", "invalidPatch"},
      {R"({"mailboxIds/inbox": null})", "invalidProperties"},
      {R"({"mailboxIds/none": true})", "invalidProperties"},
      {R"({"mailboxIds/Archive": true})", "invalidProperties"},
      {R"({"mailboxIds": {}})", "invalidProperties"},
      {R"({"mailboxIds/archive": false})", "invalidPatch"},
      {R"({"mailboxIds/archive": true, "subject": "New"})", "invalidProperties"},
  };
  for (const auto& [patch, error] : refused) {
    const auto answer = set(patch);
    EXPECT_TRUE(answer.at("updated").is_null()) << patch;
    EXPECT_EQ(answer.at("notUpdated").at(id).at("type"), error) << patch;
    EXPECT_EQ(answer.at("newState"), answer.at("oldState")) << patch;
  }
  EXPECT_EQ(shown(), before) << "nothing of a refused patch is carried out";
  EXPECT_THAT(text(answer("Email/set", R"({"update": {"gone": {}}})")),
              HasSubstr(R"({"gone":{"type":"notFound"}})"));

  const auto unread = [&] {
    return answer("Mailbox/get", R"({"ids": ["inbox"]})").at("list").at(0).at("unreadEmails").as_int64();
  };
  const auto many = unread();
  EXPECT_EQ(text(set(R"({"mailboxIds/highlighted": true, "keywords/$seen": true})").at("updated")),
            R"({")" + id + R"(":null})");
  EXPECT_EQ(shown(), R"({"id":")" + id +
                         R"(","mailboxIds":{"highlighted":true,"inbox":true},"keywords":{"$seen":true}})");
  EXPECT_EQ(unread(), many - 1);
  set(R"({"mailboxIds": {"trash": true}})");
  EXPECT_EQ(data("list?mailbox=Trash&limit=1").at("rows").at(0).at("emailId"), json::value(id))
      << "the pages show the same mail";
}

TEST_F(JmapTest, TellsWhatHasChangedSinceAState) {
  const auto start = state();
  EXPECT_EQ(text(changes(start).at("newState")), start);
  const auto created = deliver(R"({"count": 3})").at("emailIds");
  act("read", R"({"threadId": "T1"})");
  const auto all = changes(start);
  EXPECT_EQ(all.at("created"), created);
  EXPECT_EQ(text(all.at("updated")), R"(["M4"])");
  EXPECT_EQ(text(all.at("newState")), state());

  // In steps: the same in the end, and each step within its limit.
  auto at = start;
  for (const bool hasMore : {true, false}) {
    const auto step = changes(at, R"(, "maxChanges": 2)");
    EXPECT_EQ(step.at("hasMoreChanges"), json::value(hasMore));
    EXPECT_EQ(step.at("created").as_array().size() + step.at("updated").as_array().size(), 2U);
    at = text(step.at("newState"));
  }
  EXPECT_EQ(at, state());
  order("forget-changes");
  EXPECT_EQ(call("Email/changes", R"({"sinceState": )" + at + "}").at(1).at("type"),
            "cannotCalculateChanges");
  EXPECT_EQ(text(changes(state()).at("created")), "[]");
}

} // namespace ondrel::demo
