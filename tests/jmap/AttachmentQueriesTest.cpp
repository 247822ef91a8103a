#include "MailWorld.h"

#include "jmap/mail/ISO8601Date.h"

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

TEST_F(AttachmentQueriesTest, AsksForOnePageNewestFirstWithoutJunk) {
  ASSERT_TRUE(fetch(R"({"ids":[],"total":12})", R"({"list":[]})"));
  expectCalls(0, R"([
      ["Email/query", {"accountId": "u123", "filter": {"hasAttachment": true, "inMailboxOtherThan": ["J1"]},
        "sort": [{"property": "receivedAt", "isAscending": false}], "position": 60, "limit": 30,
        "calculateTotal": true}, "q0"],
      ["Email/get", {"accountId": "u123", "#ids": {"resultOf": "q0", "name": "Email/query", "path": "/ids"},
        "properties": ["id", "subject", "from", "receivedAt", "attachments"]}, "g0"]])");

  queries.forgetMailboxes();
  client.failNext(JMAPError::badResponse());
  client.answerNext(reply({R"({"ids":[],"total":0})", R"({"list":[]})"}));
  ASSERT_TRUE(run(queries.fetchAttachments(0, 30))) << "nobody knows what junk is";
  const auto& query = client.sent[2].body.at("methodCalls").as_array()[0].as_array()[1].as_object();
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
  EXPECT_EQ(page->emailCount, 3) << "also those without a row";
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

TEST(ISO8601Date, ReadsDatesOfServers) {
  const auto at = [](std::chrono::milliseconds time) {
    return Milliseconds(std::chrono::sys_days(std::chrono::year(2024) / 2 / 29)) + time;
  };
  const std::pair<const char*, std::optional<Milliseconds>> cases[] = {
      {"2024-02-29T10:20:30Z", at(10h + 20min + 30s)},
      {"2024-02-29T10:20:30+02:00", at(8h + 20min + 30s)},
      {"2024-02-28T22:50:30-05:30", at(4h + 20min + 30s)},
      {"2024-02-29T10:20:30.5Z", at(10h + 20min + 30s + 500ms)},
      {"2024-02-29T10:20:30.123999999999+00:00", at(10h + 20min + 30s + 123ms)},
      {"2024-02-29T23:59:60Z", at(24h)},
  };
  for (const auto& [text, date] : cases)
    EXPECT_EQ(parseISO8601Date(text), date) << text;
  for (const std::string text :
       {"", "2024-02-29T10:20:30", "2024-02-29 10:20:30Z", "2023-02-29T10:20:30Z", "2024-13-01T10:20:30Z",
        "2024-02-29T24:00:00Z", "2024-02-29T10:60:00Z", "2024-02-29T10:20:61Z", "2024-02-29T10:20:30.Z",
        "2024-02-29T10:20:30Zx", "2024-02-29T10:20:30+24:00", "2024-02-29T10:20:30*02:00",
        "+024-02-29T10:20:30Z"})
    EXPECT_EQ(parseISO8601Date(text), std::nullopt) << text;
}

} // namespace
} // namespace ondrel::jmap
