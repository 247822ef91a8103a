#include "MailWorld.h"

#include "jmap/ISO8601Date.h"

namespace ondrel::jmap {
namespace {

using namespace std::chrono_literals;

class AttachmentQueriesTest : public MailTest {
 protected:
  Result<AttachmentPage> fetch(const std::string& query, const std::string& get) {
    queries.mailboxes().junkId = "J1";
    client.answerNext(reply({query, get}));
    return run(queries.fetchAttachments(60, 30));
  }
};

TEST_F(AttachmentQueriesTest, AsksForOnePageNewestFirst) {
  ASSERT_TRUE(fetch(R"({"ids":[],"total":12})", R"({"list":[]})"));
  expectCalls(0, R"([
      ["Email/query", {"accountId": "u123", "filter": {"hasAttachment": true, "inMailboxOtherThan": ["J1"]},
        "sort": [{"property": "receivedAt", "isAscending": false}], "position": 60, "limit": 30,
        "calculateTotal": true}, "q0"],
      ["Email/get", {"accountId": "u123", "#ids": {"resultOf": "q0", "name": "Email/query", "path": "/ids"},
        "properties": ["id", "subject", "from", "receivedAt", "attachments"]}, "g0"]])");
}

TEST_F(AttachmentQueriesTest, ListsJunkTooWhenNobodyKnowsWhatJunkIs) {
  client.failNext(JMAPError::badResponse());
  client.answerNext(reply({R"({"ids":[],"total":0})", R"({"list":[]})"}));
  ASSERT_TRUE(run(queries.fetchAttachments(0, 30)));
  const auto& query = client.sent[1].body.at("methodCalls").as_array()[0].as_array()[1].as_object();
  EXPECT_EQ(query.at("filter"), boost::json::parse(R"({"hasAttachment": true})"));
}

TEST_F(AttachmentQueriesTest, MakesARowForEachRealAttachment) {
  const auto page = fetch(R"({"ids":["M2","gone","M1"],"total":77})", R"({"list":[
      {"id":"M1","subject":"One","from":[{"name":"","email":"a@b.example"}],"receivedAt":"2024-01-31T10:20:30Z",
       "attachments":[{"blobId":"G1","name":"a.pdf","type":"application/pdf","size":5000000000,"disposition":"attachment"},
                      {"blobId":"G2","cid":"abc"},{"blobId":"G3","disposition":"inline"},{"name":"no blob"},
                      {"blobId":"G4","cid":"","name":null,"type":null,"size":"12"}]},
      {"subject":"no id","attachments":[{"blobId":"G9"}]},
      {"id":"M2","subject":null,"from":null,"receivedAt":"yesterday","attachments":[{"blobId":"G5","cid":null}]},
      {"id":"unasked","attachments":[{"blobId":"G8"}]}]})");
  ASSERT_TRUE(page);
  EXPECT_EQ(page->emailCount, 3);
  EXPECT_EQ(page->total, 77);
  const auto date = *parseISO8601Date("2024-01-31T10:20:30Z");
  const std::vector<AttachmentInfo> expected{
      {"M2-G5", "M2", "G5", "Untitled", "application/octet-stream", 0, "(No subject)", "Unknown",
       Milliseconds::min()},
      {"M1-G1", "M1", "G1", "a.pdf", "application/pdf", 5000000000, "One", "a@b.example", date},
      {"M1-G4", "M1", "G4", "Untitled", "application/octet-stream", 0, "One", "a@b.example", date},
  };
  EXPECT_EQ(page->attachments, expected);
}

TEST_F(AttachmentQueriesTest, CountsEmailsEvenWithoutRows) {
  const struct {
    const char* query;
    const char* get;
    std::int64_t emailCount;
    std::int64_t total;
  } cases[] = {
      {R"({"ids":["M1","M2"],"total":2})",
       R"({"list":[{"id":"M1","attachments":[{"blobId":"G","cid":"x"}]}]})", 2, 2},
      {R"({"ids":[],"total":40})", R"({"list":[]})", 0, 40},
      {R"({})", R"({"list":[{},{}]})", 0, 2},
      {R"({"ids":null,"total":null})", R"({"list":[{}]})", 0, 1},
  };
  for (const auto& each : cases) {
    const auto page = fetch(each.query, each.get);
    ASSERT_TRUE(page) << each.query;
    EXPECT_EQ(page->attachments.size(), 0u);
    EXPECT_EQ(page->emailCount, each.emailCount) << each.query;
    EXPECT_EQ(page->total, each.total) << each.query;
  }
}

TEST_F(AttachmentQueriesTest, LogsTheStartOfAReplyOfAnotherShape) {
  queries.mailboxes().junkId = "J1";
  const auto body = R"({"methodResponses":[["x",{"ids":[]},"q0"]],"y":")" + std::string(5000, 'z') + "\"}";
  client.answerNext(body);
  EXPECT_EQ(run(queries.fetchAttachments(0, 30)).error(), JMAPError::badResponse());
  EXPECT_EQ(log.lines(), Lines{"error network: fetchAttachments: unexpected JMAP response format — body: " +
                               body.substr(0, 4000)});
  client.answerNext("{\"methodResp");
  EXPECT_EQ(run(queries.fetchAttachments(0, 30)).error().kind, JMAPError::Kind::malformed);
}

TEST(ISO8601Date, ReadsDatesOfServers) {
  const auto at = [](int hour, int minute, int second) {
    return Milliseconds(std::chrono::sys_days(std::chrono::year(2024) / 2 / 29)) + std::chrono::hours(hour) +
           std::chrono::minutes(minute) + std::chrono::seconds(second);
  };
  const std::pair<const char*, std::optional<Milliseconds>> cases[] = {
      {"2024-02-29T10:20:30Z", at(10, 20, 30)},
      {"2024-02-29T10:20:30+02:00", at(8, 20, 30)},
      {"2024-02-28T22:50:30-05:30", at(4, 20, 30)},
      {"2024-02-29T10:20:30.5Z", at(10, 20, 30) + 500ms},
      {"2024-02-29T10:20:30.123999999999+00:00", at(10, 20, 30) + 123ms},
      {"2024-02-29T23:59:60Z", at(24, 0, 0)},
  };
  for (const auto& [text, date] : cases)
    EXPECT_EQ(parseISO8601Date(text), date) << text;
  for (const std::string text :
       {"", "2024", "2024-02-29", "2024-02-29T10:20:30", "2024-02-29 10:20:30Z", "2023-02-29T10:20:30Z",
        "2024-13-01T10:20:30Z", "2024-00-01T10:20:30Z", "2024-02-29T24:00:00Z", "2024-02-29T10:60:00Z",
        "2024-02-29T10:20:61Z", "2024-02-29T10:20:30.Z", "2024-02-29T10:20:30Zx", "2024-02-29T10:20:30+0200",
        "2024-02-29T10:20:30+24:00", "2024-02-29T10:20:30*02:00", "+024-02-29T10:20:30Z",
        "2024-2-29T10:20:30Z"})
    EXPECT_EQ(parseISO8601Date(text), std::nullopt) << text;
}

} // namespace
} // namespace ondrel::jmap
