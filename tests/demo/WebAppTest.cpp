#include "ServiceFixture.h"

namespace ondrel::demo {

class WebAppTest : public ServiceFixture {};

TEST_F(WebAppTest, ShowsTheSignInPageUntilTheCookieIsThere) {
  for (const char* path : {"/", "/mail/Inbox/?u=demo", "/settings/general", "/mail/long"})
    EXPECT_THAT(get(path).body, HasSubstr("id=\"sign-in\"")) << path;
  EXPECT_EQ(get("/data/mailboxes").status, 401U);
  EXPECT_THAT(page("/").head, HasSubstr("\nLocation: /mail/Inbox/?u=demo\r\n"));
  for (const char* path : {"/mail/Inbox/T1.M4?u=demo", "/mail/House%20%26%20garden/", "/settings/general"})
    EXPECT_THAT(page(path).body, HasSubstr("/app/main.js")) << path;
  order("sign-out");
  EXPECT_THAT(page("/mail/Inbox/").body, HasSubstr("id=\"sign-in\""));

  EXPECT_THAT(get("/app/main.js").head, HasSubstr("text/javascript"));
  EXPECT_EQ(get("/app/%2e%2e/attachments/notes.txt").status, 404U);
  EXPECT_EQ(get("/nowhere").status, 404U);
  EXPECT_EQ(get("/", "", "elsewhere.example").status, 421U);
}

TEST_F(WebAppTest, GoesBackAfterTheSignInToItsOwnPagesOnly) {
  const std::pair<const char*, const char*> cases[] = {
      {"next=%2Fmail%2FArchive%2FT9.M9%3Fu%3Ddemo", "/mail/Archive/T9.M9?u=demo"},
      {"next=%2Fsettings%2Fgeneral", "/settings/general"},
      {"next=https%3A%2F%2Fevil.example%2F", "/mail/Inbox/?u=demo"},
      {"next=%2F%2Fevil.example%2Fmail%2F", "/mail/Inbox/?u=demo"},
      {"next=%2Fmail%2F%0D%0ASet-Cookie%3A%20a%3Db", "/mail/Inbox/?u=demo"},
  };
  for (const auto& [next, location] : cases)
    EXPECT_THAT(ask("POST", "/sign-in", "", next).answer().head,
                HasSubstr(std::string("\nLocation: ") + location + "\r\n"))
        << next;
}

TEST_F(WebAppTest, ListsMailByPagesNewestFirst) {
  std::string last = "9999";
  const auto total = data("list?mailbox=Inbox").at("total").to_number<std::size_t>();
  EXPECT_GT(total, 2000U);
  std::size_t seen = 0;
  while (seen < total)
    for (const auto& row : data(fmt::format("list?mailbox=Inbox&position={}", seen)).at("rows").as_array()) {
      const std::string time(row.at("receivedAt").as_string());
      EXPECT_LE(time, last);
      last = time;
      ++seen;
    }
  EXPECT_EQ(seen, total);

  // The place of a thread in the list is what the list itself says.
  const auto row = data("list?mailbox=Inbox&limit=1&position=777").at("rows").at(0);
  const std::string threadId(row.at("threadId").as_string());
  EXPECT_EQ(data("thread?mailbox=Inbox&id=" + threadId).at("index"), 777);
  EXPECT_TRUE(data("thread?mailbox=Trash&id=" + threadId).at("index").is_null());
  EXPECT_EQ(data("thread?id=M2").at("threadId"), "T1") << "by the id of a message";
}

TEST_F(WebAppTest, KeepsWhatIsReadMovedAndSent) {
  const auto inbox = [&](const char* count) { return data("mailboxes").at(0).at(count).as_int64(); };
  const auto unread = inbox("unread");
  const auto total = inbox("total");
  act("read", R"({"threadId": "T1"})");
  EXPECT_EQ(inbox("unread"), unread - 1);
  act("move", R"({"threadId": "T1", "role": "trash"})");
  EXPECT_EQ(inbox("total"), total - 1);
  EXPECT_EQ(data("list?mailbox=Trash").at("rows").at(0).at("threadId"), "T1");

  // A file that is stored is shown under its name as nothing but bytes, and can be sent.
  const std::string bytes("a\0b", 3);
  const auto stored = json::parse(act("upload?name=..%2F%3Cb%3E%0A.html", bytes).body);
  const auto id = text(stored.at("blobId"));
  const std::string path(json::parse(act("share", R"({"blobId": )" + id + "}").body).at("path").as_string());
  EXPECT_TRUE(path.ends_with("/..%2F%3Cb%3E%0A.html")) << path;
  const auto shown = get(path, "", "usercontent.localhost");
  EXPECT_EQ(shown.body, bytes);
  EXPECT_THAT(shown.head, HasSubstr("application/octet-stream"));
  EXPECT_EQ(act("share", R"({"blobId": "none"})").status, 400U);

  EXPECT_EQ(act("send", R"({"to": [], "subject": "Nobody"})").status, 400U);
  act("send",
      R"({"to": ["a@b.example"], "subject": "Hello", "html": "", "blobIds": [)" + id + R"(, "none"]})");
  const auto row = data("list?mailbox=Sent").at("rows").at(0);
  EXPECT_EQ(row.at("subject"), "Hello");
  const auto sent = data("thread?id=" + std::string(row.at("emailId").as_string())).at("messages").at(0);
  EXPECT_EQ(sent.at("attachments").as_array().size(), 1U);
  EXPECT_EQ(sent.at("attachments").at(0).at("name"), "../<b>\n.html");
  EXPECT_EQ(page("/data/send").status, 405U);
}

TEST_F(WebAppTest, GivesBodiesThatComeLateOrInAPageOfTheirOwn) {
  const auto late = data("thread?id=T7").at("messages").at(2);
  EXPECT_EQ(late.at("html"), "");
  const std::string id(late.at("id").as_string());
  EXPECT_THAT(page("/data/body/" + id).body, HasSubstr("<p>"));
  EXPECT_EQ(page("/data/body/none").status, 404U);

  const auto framed = page("/mail/body/M33.html");
  EXPECT_THAT(framed.body, HasSubstr("<div class=\"v-Message-body\"><p>"));
  EXPECT_THAT(framed.head, HasSubstr("script-src 'self';"));
  EXPECT_EQ(get("/mail/body/M33.html").status, 404U) << "signed out";
  EXPECT_EQ(page("/mail/body/" + id + ".html").status, 404U);
}

TEST_F(WebAppTest, GivesUserContentWithItsTypeAndDisposition) {
  const auto host = "usercontent.localhost";
  const std::tuple<const char*, int, const char*, const char*> cases[] = {
      {"T1", 3, "", "inline; filename*=UTF-8''Programme.pdf\r\n"},
      {"T1", 3, "?u=demo&download=1", "attachment; filename*=UTF-8''Programme.pdf\r\n"},
      // Hostile names arrive whole, and can't break out of the header.
      {"T5", 0, "?download=1", "attachment; filename*=UTF-8''..%2F..%2Foutside.txt\r\n"},
  };
  for (const auto& [thread, message, query, disposition] : cases) {
    const auto file =
        data(std::string("thread?id=") + thread).at("messages").at(message).at("attachments").at(0);
    const auto answer =
        get(fmt::format("/blob/{}/x{}", std::string_view(file.at("blobId").as_string()), query), "", host);
    EXPECT_THAT(answer.head, HasSubstr(disposition));
    EXPECT_THAT(answer.head, HasSubstr("Content-Type: " + std::string(file.at("type").as_string())));
    EXPECT_EQ(json::value(answer.body.size()), file.at("size"));
  }
  EXPECT_THAT(get("/source/M4?u=demo", "", host).body, HasSubstr("Message-ID: <M4@mail.example.org>\r\n"));
  EXPECT_EQ(get("/source/M4").status, 404U) << "only on its own host";
  EXPECT_EQ(get("/mail/Inbox/", "", host).status, 404U);
}

} // namespace ondrel::demo
