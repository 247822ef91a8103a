#include "JmapFixture.h"

#include <gmock/gmock.h>

namespace ondrel::demo {

namespace json = boost::json;
using testing::HasSubstr;
using testing::SizeIs;
using testing::StartsWith;

class JmapMailTest : public JmapFixture {
 protected:
  json::object email(const std::string& id, const std::string& properties) {
    return answer("Email/get", R"({"ids": [")" + id + R"("], "properties": )" + properties + "}")
        .at("list")
        .at(0)
        .as_object();
  }
  std::string delivered(const std::string& order) {
    return std::string(deliver(order).at("emailId").as_string());
  }
  json::array found(const std::string& filter) {
    return answer("Email/query", R"({"filter": )" + filter + "}").at("ids").as_array();
  }
  json::object mailbox(const std::string& id) {
    return answer("Mailbox/get", R"({"ids": [")" + id + R"("]})").at("list").at(0).as_object();
  }
  std::string state() { return std::string(answer("Email/get", R"({"ids": []})").at("state").as_string()); }
  json::object changes(const std::string& since, const std::string& more = "") {
    return answer("Email/changes", R"({"sinceState": ")" + since + "\"" + more + "}");
  }
};

TEST_F(JmapMailTest, GivesEmailsAsTheyAre) {
  const auto got = answer("Email/get", R"({"ids": ["M4", "none", "M1", "M4"], "properties": ["subject"]})");
  EXPECT_EQ(text(got.at("list")), R"([{"id":"M4","subject":"Plans for the spring workshop"},)"
                                  R"({"id":"M1","subject":"Plans for the spring workshop"}])");
  EXPECT_EQ(text(got.at("notFound")), R"(["none"])");

  EXPECT_EQ(text(email("M4", R"(["messageId", "from", "to", "cc", "receivedAt", "mailboxIds", "keywords",
                                 "threadId", "hasAttachment", "header:message-id", "header:X-None:all",
                                 "header:Message-ID:asMessageIds"])")),
            R"({"id":"M4","messageId":["M4@mail.example.org"],)"
            R"("from":[{"name":"Nadia Okafor","email":"nadia.okafor@example.org"}],)"
            R"("to":[{"name":"Robin Ashworth","email":"robin@demo.example"}],"cc":null,)"
            R"("receivedAt":"2025-11-20T09:41:00Z","mailboxIds":{"inbox":true},"keywords":{},)"
            R"("threadId":"T1","hasAttachment":true,"header:message-id":" <M4@mail.example.org>",)"
            R"("header:X-None:all":[],"header:Message-ID:asMessageIds":["M4@mail.example.org"]})");

  const auto bare = delivered(R"({"subject": null, "from": null, "messageId": null, "unread": false})");
  EXPECT_EQ(text(email(bare, R"(["subject", "from", "messageId", "keywords"])")),
            R"({"id":")" + bare +
                R"(","subject":null,"from":null,"messageId":null,"keywords":{"$seen":true}})");
  const auto noName = delivered(R"({"fromName": "", "subject": ""})");
  EXPECT_EQ(text(email(noName, R"(["subject", "from"])")),
            R"({"id":")" + noName +
                R"(","subject":"","from":[{"name":null,"email":"nadia.okafor@example.org"}]})");
}

TEST_F(JmapMailTest, GivesBodiesInTheFormsAskedFor) {
  const auto id = delivered(R"({"text": "Grüße & so"})");
  const auto values = [&](const std::string& more) {
    const auto got =
        answer("Email/get", R"({"ids": [")" + id + R"("], "properties": ["bodyValues"])" + more + "}");
    json::object shown;
    for (const auto& [part, value] : got.at("list").at(0).at("bodyValues").as_object())
      shown[part] = value.at("value");
    return text(shown);
  };
  EXPECT_EQ(values(""), "{}");
  EXPECT_EQ(values(R"(, "fetchTextBodyValues": true)"), R"({"1":"Grüße & so\n"})");
  EXPECT_EQ(values(R"(, "fetchHTMLBodyValues": true)"), R"({"2":"<p>Grüße &amp; so</p>"})");
  EXPECT_EQ(values(R"(, "fetchAllBodyValues": true)"), R"({"1":"Grüße & so\n","2":"<p>Grüße &amp; so</p>"})");
  EXPECT_EQ(values(R"(, "fetchTextBodyValues": true, "maxBodyValueBytes": 3)"), R"({"1":"Gr"})");

  // A message in a frame is HTML alone; one without text has no text parts at all.
  const auto framed = email("M29", R"(["textBody", "htmlBody"])");
  EXPECT_EQ(framed.at("textBody").at(0).at("type"), "text/html");
  EXPECT_EQ(text(framed.at("textBody")), text(framed.at("htmlBody")));
  const auto empty = [&] {
    for (const auto& candidate :
         found(R"({"inMailbox": "archive", "hasAttachment": true, "maxSize": 300})")) {
      const auto got =
          email(std::string(candidate.as_string()), R"(["subject", "textBody", "htmlBody", "from"])");
      if (got.at("subject").is_null())
        return got;
    }
    return json::object();
  }();
  ASSERT_FALSE(empty.empty());
  EXPECT_EQ(text(empty.at("textBody")) + text(empty.at("htmlBody")) + text(empty.at("from")), "[][]null");
}

TEST_F(JmapMailTest, HasAttachmentsOfManyKinds) {
  const auto byName = [&](const std::string& subject) {
    const auto ids = found(R"({"inMailbox": "archive", "subject": ")" + subject + R"("})");
    EXPECT_THAT(ids, SizeIs(1)) << subject;
    return email(std::string(ids.at(0).as_string()), R"(["attachments", "hasAttachment", "messageId",
                                                        "mailboxIds", "bodyStructure", "keywords"])");
  };
  const auto inside = byName("Images inside of the text").at("attachments").as_array();
  EXPECT_EQ(inside[0].at("disposition"), "inline");
  EXPECT_EQ(inside[1].at("cid"), "signature@mail.example.org");
  EXPECT_TRUE(inside[2].at("cid").is_null());
  const auto nameless = byName("A file without a name").at("attachments").at(0);
  EXPECT_TRUE(nameless.at("name").is_null());
  EXPECT_TRUE(nameless.at("disposition").is_null());
  EXPECT_TRUE(byName("A message without Message-ID").at("messageId").is_null());
  EXPECT_EQ(text(byName("In two mailboxes at once").at("mailboxIds")), R"({"archive":true,"house":true})");
  const auto all = byName("Everything for the workshop in one place");
  EXPECT_EQ(all.at("attachments").at(0).at("type"), "application/zip");
  EXPECT_EQ(all.at("bodyStructure").at("subParts").as_array().size(), 5u);
  EXPECT_EQ(all.at("bodyStructure").at("subParts").at(0).at("type"), "multipart/alternative");
  EXPECT_THAT(found(R"({"inMailbox": "junk", "hasAttachment": true, "subject": "won"})"), SizeIs(1));

  // Page by page, as a list of attachments asks for them.
  std::size_t seen = 0;
  std::size_t total = 1;
  while (seen < total) {
    const auto page =
        answer("Email/query", R"({"filter": {"hasAttachment": true, "inMailboxOtherThan": ["junk"]},
        "sort": [{"property": "receivedAt", "isAscending": false}], "limit": 30, "calculateTotal": true,
        "position": )" + std::to_string(seen) +
                                  "}");
    total = page.at("total").to_number<std::size_t>();
    ASSERT_FALSE(page.at("ids").as_array().empty());
    seen += page.at("ids").as_array().size();
  }
  EXPECT_EQ(seen, total);
  EXPECT_GT(total, 200u);
  EXPECT_EQ(text(answer("Email/query", R"({"position": 100000})").at("ids")), "[]");
}

TEST_F(JmapMailTest, FindsWhatTheFilterDescribes) {
  const auto a =
      delivered(R"({"subject": "Zebra crossing", "fromName": "Émile Zola", "mailbox": ["inbox", "house"],
      "text": "The quick fox", "receivedAt": "2026-01-01T00:00:00Z", "attachments": 1})");
  const auto b = delivered(R"({"subject": "Zebra CROSSING again", "fromEmail": "kofi@zebra.example",
      "text": "quick and brown", "receivedAt": "2026-01-02T00:00:00Z", "unread": false, "mailbox": "Spam"})");
  const struct {
    const char* filter;
    bool hasA;
    bool hasB;
  } cases[] = {
      {R"({"text": "zebra"})", true, true},
      {R"({"text": "zebra fox"})", true, false},
      {R"({"text": "\"quick and\" zebra"})", false, true},
      {R"({"from": "émile"})", true, false},
      {R"({"from": "kofi@zebra"})", false, true},
      {R"({"to": "robin", "subject": "zebra"})", true, true},
      {R"({"subject": "crossing AGAIN"})", false, true},
      {R"({"body": "fox"})", true, false},
      {R"({"subject": "zebra", "hasAttachment": true})", true, false},
      {R"({"subject": "zebra", "inMailbox": "house"})", true, false},
      {R"({"subject": "zebra", "inMailboxOtherThan": ["junk"]})", true, false},
      {R"({"subject": "zebra", "inMailboxOtherThan": ["inbox"]})", true, true},
      {R"({"subject": "zebra", "before": "2026-01-02T00:00:00Z"})", true, false},
      {R"({"subject": "zebra", "after": "2026-01-02T00:00:00.000Z"})", false, true},
      {R"({"subject": "zebra", "hasKeyword": "$seen"})", false, true},
      {R"({"subject": "zebra", "notKeyword": "$seen"})", true, false},
      {R"({"header": ["subject", "again"]})", false, true},
      {R"({"subject": "zebra", "header": ["X-Demo-Attachment"]})", true, false},
      {R"({"operator": "OR", "conditions": [{"subject": "again"}, {"body": "fox"}]})", true, true},
      {R"({"operator": "AND", "conditions": [{"subject": "zebra"}, {"body": "fox"}]})", true, false},
      {R"({"operator": "NOT", "conditions": [{"before": "2026-01-01T12:00:00Z"}]})", false, true},
      {R"({"operator": "OR", "conditions": []})", false, false},
      {R"({"text": "no such word"})", false, false},
  };
  for (const auto& [filter, hasA, hasB] : cases) {
    const auto ids = found(filter);
    EXPECT_EQ(std::ranges::find(ids, json::value(a)) != ids.end(), hasA) << filter;
    EXPECT_EQ(std::ranges::find(ids, json::value(b)) != ids.end(), hasB) << filter;
  }
  EXPECT_EQ(text(found(R"({"header": ["Message-ID", ")" + a + R"(@mail.example.org"]})")), "[\"" + a + "\"]");
  EXPECT_EQ(text(found(R"({"header": ["message-id", "<)" + b + R"(@mail.example.org>"]})")),
            "[\"" + b + "\"]");
  const auto newest = [&](const std::string& more) {
    return text(answer("Email/query", R"({"sort": [{"property": "receivedAt", "isAscending": false}],
                                          "filter": {"subject": "zebra"}, )" +
                                          more + "}")
                    .at("ids"));
  };
  EXPECT_EQ(newest(R"("limit": 1)"), "[\"" + b + "\"]");
  EXPECT_EQ(newest(R"("position": -1)"), "[\"" + a + "\"]");
  EXPECT_EQ(newest(R"("anchor": ")" + b + R"(", "anchorOffset": 1)"), "[\"" + a + "\"]");
  EXPECT_EQ(newest(R"("limit": 0)"), "[]");
}

TEST_F(JmapMailTest, ChangesMailboxesAndKeywords) {
  const auto id = delivered(R"({"threadId": "T4"})");
  const auto inbox = mailbox("inbox");
  const auto set = [&](const std::string& patch) {
    return answer("Email/set", R"({"update": {")" + id + R"(": )" + patch + "}}");
  };
  const auto shown = [&] { return text(email(id, R"(["mailboxIds", "keywords"])")); };
  const auto before = shown();
  const struct {
    const char* patch;
    const char* error;
  } refused[] = {
      {"[]", "invalidPatch"},
      {R"({"mailboxIds/inbox": null})", "invalidProperties"},
      {R"({"mailboxIds/none": true})", "invalidProperties"},
      {R"({"mailboxIds": {}})", "invalidProperties"},
      {R"({"mailboxIds": {"inbox": false}})", "invalidProperties"},
      {R"({"mailboxIds/archive": false})", "invalidPatch"},
      {R"({"mailboxIds/archive": true, "mailboxIds": {"trash": true}})", "invalidPatch"},
      {R"({"keywords/$seen/deeper": true})", "invalidPatch"},
      {R"({"subject": "New"})", "invalidProperties"},
      {R"({"mailboxIds/archive": true, "subject": "New"})", "invalidProperties"},
  };
  for (const auto& [patch, error] : refused) {
    const auto answer = set(patch);
    EXPECT_TRUE(answer.at("updated").is_null()) << patch;
    EXPECT_EQ(answer.at("notUpdated").at(id).at("type"), error) << patch;
    EXPECT_EQ(answer.at("newState"), answer.at("oldState")) << patch;
  }
  EXPECT_EQ(shown(), before) << "nothing of a refused patch is carried out";

  EXPECT_EQ(text(set(R"({"mailboxIds/highlighted": true, "keywords/$Seen": true})").at("updated")),
            R"({")" + id + R"(":null})");
  EXPECT_EQ(shown(), R"({"id":")" + id +
                         R"(","mailboxIds":{"highlighted":true,"inbox":true},"keywords":{"$seen":true}})");
  EXPECT_EQ(mailbox("inbox").at("unreadEmails").as_int64(), inbox.at("unreadEmails").as_int64() - 1);
  EXPECT_EQ(mailbox("highlighted").at("totalEmails"), 1);
  set(R"({"mailboxIds/inbox": null, "mailboxIds/highlighted": null, "mailboxIds/trash": true})");
  EXPECT_EQ(mailbox("highlighted").at("totalEmails"), 0);
  EXPECT_EQ(mailbox("inbox").at("totalEmails").as_int64(), inbox.at("totalEmails").as_int64() - 1);
  set(R"({"mailboxIds": {"archive": true}, "keywords": {"a~b": true, "c": true}})");
  set(R"({"keywords/a~0b": null})");
  EXPECT_EQ(shown(), R"({"id":")" + id + R"(","mailboxIds":{"archive":true},"keywords":{"c":true}})");
  EXPECT_EQ(data("list?mailbox=Archive&limit=1", signIn()).at("rows").at(0).at("emailId"), json::value(id))
      << "the pages show the same mail";

  const auto rest = answer("Email/set", R"({"update": {"gone": {}}, "create": {"k1": {}},
                                            "destroy": [")" +
                                            id + R"(", "none"]})");
  EXPECT_EQ(rest.at("notUpdated").at("gone").at("type"), "notFound");
  EXPECT_EQ(rest.at("notCreated").at("k1").at("type"), "forbidden");
  EXPECT_EQ(text(rest.at("destroyed")), "[\"" + id + "\"]");
  EXPECT_EQ(rest.at("notDestroyed").at("none").at("type"), "notFound");
  EXPECT_EQ(text(answer("Thread/get", R"({"ids": ["T4", "T0"]})").at("notFound")), R"(["T0"])");
  EXPECT_EQ(
      text(answer("Thread/get", R"({"ids": ["T4"]})").at("list").at(0).at("emailIds").as_array().size()),
      "1");
}

TEST_F(JmapMailTest, TellsWhatHasChangedSinceAState) {
  const auto start = state();
  EXPECT_EQ(changes(start).at("newState"), json::value(start));
  const auto first = delivered("{}");
  const auto many = deliver(R"({"count": 3})").at("emailIds").as_array();
  answer("Email/set", R"({"update": {")" + first +
                          R"(": {"keywords/$seen": true}, "M1": {"keywords/x": true}},
                          "destroy": [")" +
                          std::string(many[2].as_string()) + R"(", "M2"]})");
  const auto all = changes(start);
  EXPECT_EQ(text(all.at("created")), text(json::array{first, many[0], many[1]}));
  EXPECT_EQ(text(all.at("updated")), R"(["M1"])");
  EXPECT_EQ(text(all.at("destroyed")), R"(["M2"])");
  EXPECT_EQ(all.at("newState"), json::value(state()));

  // In steps: the same in the end, and each step within its limit.
  std::set<std::string> created;
  auto at = start;
  for (bool hasMore = true; hasMore;) {
    const auto step = changes(at, R"(, "maxChanges": 2)");
    EXPECT_LE(step.at("created").as_array().size() + step.at("updated").as_array().size() +
                  step.at("destroyed").as_array().size(),
              2u);
    for (const auto& id : step.at("created").as_array())
      created.emplace(id.as_string());
    hasMore = step.at("hasMoreChanges").as_bool();
    ASSERT_NE(step.at("newState"), json::value(at));
    at = std::string(step.at("newState").as_string());
  }
  EXPECT_EQ(at, state());
  EXPECT_TRUE(created.contains(first));

  const auto mailboxes =
      answer("Mailbox/get", R"({"ids": []})"); // its own state, which the same changes have moved
  deliver(R"({"mailbox": "Archive"})");
  EXPECT_EQ(
      text(answer("Mailbox/changes", R"({"sinceState": )" + text(mailboxes.at("state")) + "}").at("updated")),
      R"(["archive"])");
  order("forget-changes");
  EXPECT_EQ(error("Email/changes", R"({"sinceState": ")" + at + "\"}"), "cannotCalculateChanges");
  EXPECT_NE(state(), at);
  EXPECT_EQ(text(changes(state()).at("created")), "[]");
}

TEST_F(JmapMailTest, ShowsAThreadByTheIdOfAMessage) {
  EXPECT_EQ(data("thread?id=M2", signIn()).at("threadId"), "T1");
}

} // namespace ondrel::demo
