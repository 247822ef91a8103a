#include "ServiceFixture.h"

#include <gmock/gmock.h>

namespace ondrel::demo {

using testing::HasSubstr;
using testing::Not;
using testing::StartsWith;

class WebAppTest : public ServiceFixture {};

TEST_F(WebAppTest, ShowsTheSignInPageUntilTheCookieIsThere) {
  EXPECT_THAT(fetch({web("/")}).body, HasSubstr("id=\"sign-in\""));
  EXPECT_THAT(fetch({web("/mail/Inbox/?u=demo")}).body, HasSubstr("id=\"sign-in\""));
  EXPECT_EQ(fetch({web("/data/mailboxes")}).status, 401u);

  const auto cookie = signIn();
  const auto root = fetch({web("/"), "GET", {{"Cookie", cookie}}});
  EXPECT_EQ(root.status, 303u);
  EXPECT_EQ(root.headers.at("location"), "/mail/Inbox/?u=demo");
  EXPECT_GT(data("mailboxes", cookie).as_array().size(), 4u);

  EXPECT_EQ(order("sign-out").status, 200u);
  EXPECT_THAT(fetch({web("/mail/Inbox/"), "GET", {{"Cookie", cookie}}}).body, HasSubstr("id=\"sign-in\""));
  EXPECT_THAT(fetch({web("/"), "GET", {{"Cookie", "other=1; " + signIn()}}}).status, 303u);
}

TEST_F(WebAppTest, GoesBackAfterTheSignInToItsOwnPagesOnly) {
  const struct {
    const char* next;
    const char* location;
  } cases[] = {
      {"next=%2Fmail%2FArchive%2FT9.M9%3Fu%3Ddemo", "/mail/Archive/T9.M9?u=demo"},
      {"next=%2Fsettings%2Fgeneral", "/settings/general"},
      {"next=https%3A%2F%2Fevil.example%2F", "/mail/Inbox/?u=demo"},
      {"next=%2F%2Fevil.example%2Fmail%2F", "/mail/Inbox/?u=demo"},
      {"next=%2Fmail%2F%0D%0ASet-Cookie%3A%20a%3Db", "/mail/Inbox/?u=demo"},
  };
  for (const auto& [next, location] : cases)
    EXPECT_EQ(fetch({web("/sign-in"), "POST", {}, next}).headers.at("location"), location) << next;
}

TEST_F(WebAppTest, ServesTheApplicationAtEveryDeepLink) {
  const auto cookie = signIn();
  for (const char* path :
       {"/mail/Inbox/T1.M4?u=demo", "/mail/House%20%26%20garden/", "/mail/compose?to=a@b.example",
        "/mail/Inbox/compose&ui=minimal", "/settings/notifications?u=demo"}) {
    const auto page = fetch({web(path), "GET", {{"Cookie", cookie}}});
    EXPECT_THAT(page.body, HasSubstr("/app/main.js")) << path;
    EXPECT_THAT(page.headers.at("content-type"), StartsWith("text/html")) << path;
  }
  const auto script = fetch({web("/app/main.js")});
  EXPECT_EQ(script.headers.at("content-type"), "text/javascript; charset=utf-8");
  EXPECT_EQ(fetch({web("/app/%2e%2e/attachments/notes.txt")}).status, 404u);
  EXPECT_EQ(fetch({web("/nowhere")}).status, 404u);
  EXPECT_EQ(fetch({web("/"), "GET", {{"Host", "elsewhere.example"}}}).status, 421u);
}

TEST_F(WebAppTest, ListsMailByPagesNewestFirst) {
  const auto cookie = signIn();
  std::string last = "9999";
  std::size_t seen = 0;
  std::size_t total = 1;
  while (seen < total) {
    const auto page = data("list?mailbox=Inbox&limit=200&position=" + std::to_string(seen), cookie);
    total = page.at("total").to_number<std::size_t>();
    ASSERT_FALSE(page.at("rows").as_array().empty());
    for (const auto& row : page.at("rows").as_array()) {
      const std::string time(row.at("receivedAt").as_string());
      EXPECT_LE(time, last);
      last = time;
      ++seen;
    }
  }
  EXPECT_EQ(seen, total);
  EXPECT_GT(total, 2000u);

  // The place of a thread in the list is what the list itself says.
  const auto row = data("list?mailbox=Inbox&limit=1&position=777", cookie).at("rows").at(0);
  const std::string threadId(row.at("threadId").as_string());
  EXPECT_EQ(data("thread?mailbox=Inbox&id=" + threadId, cookie).at("index"), 777);
  EXPECT_TRUE(data("thread?mailbox=Trash&id=" + threadId, cookie).at("index").is_null());
}

TEST_F(WebAppTest, KeepsWhatIsReadMovedAndSent) {
  const auto cookie = signIn();
  const auto act = [&](const std::string& path, const std::string& body) {
    return fetch({web("/data/" + path), "POST", {{"Cookie", cookie}}, body}).status;
  };
  const auto mailbox = [&](int index) { return data("mailboxes", cookie).at(index); };
  const auto before = mailbox(0);
  EXPECT_EQ(act("read", R"({"threadId": "T1"})"), 200u);
  EXPECT_EQ(mailbox(0).at("unread").as_int64(), before.at("unread").as_int64() - 1);
  EXPECT_EQ(act("move", R"({"threadId": "T1", "role": "trash"})"), 200u);
  EXPECT_EQ(mailbox(0).at("total").as_int64(), before.at("total").as_int64() - 1);
  EXPECT_EQ(data("list?mailbox=Trash", cookie).at("rows").at(0).at("threadId"), "T1");

  EXPECT_EQ(act("send", R"({"to": [], "subject": "Nobody"})"), 400u);
  EXPECT_EQ(act("send", R"({"to": ["a@b.example"], "subject": "Hello", "html": "<p>x</p>"})"), 200u);
  EXPECT_EQ(data("list?mailbox=Sent", cookie).at("rows").at(0).at("subject"), "Hello");
  EXPECT_EQ(fetch({web("/data/send"), "GET", {{"Cookie", cookie}}}).status, 405u);
}

TEST_F(WebAppTest, StoresAndSharesFiles) {
  const auto cookie = signIn();
  const auto post = [&](const std::string& path, const std::string& body) {
    return fetch({web("/data/" + path), "POST", {{"Cookie", cookie}}, body});
  };
  const std::string bytes("a\0b", 3);
  const auto stored = boost::json::parse(post("upload?name=..%2F%3Cb%3E%0A.html", bytes).body);
  EXPECT_EQ(stored.at("size"), 3);
  const auto id = std::string(stored.at("blobId").as_string());
  const auto shared = boost::json::parse(post("share", R"({"blobId": ")" + id + R"("})").body);
  const auto path = std::string(shared.at("path").as_string());
  EXPECT_EQ(path, "/blob/" + id + "/..%2F%3Cb%3E%0A.html");
  const auto shown = fetch({web(path, "usercontent.localhost")});
  EXPECT_EQ(shown.body, bytes);
  EXPECT_EQ(shown.headers.at("content-type"), "application/octet-stream");

  EXPECT_EQ(post("share", R"({"blobId": "none"})").status, 404u);
  EXPECT_EQ(post("share", "no JSON").status, 404u);
  EXPECT_EQ(fetch({web("/data/upload?name=a"), "POST", {}, bytes}).status, 401u);
  EXPECT_EQ(order("fail", R"({"path": "/data/upload", "status": 507})").status, 200u);
  EXPECT_EQ(post("upload?name=a", bytes).status, 507u);

  const auto sent =
      boost::json::parse(post("send", R"({"to": ["a@b.example"], "subject": "S", "html": "", "blobIds": [")" +
                                          id + R"(", "none"]})")
                             .body);
  const auto thread = data("thread?id=" + std::string(sent.at("threadId").as_string()), cookie);
  const auto& files = thread.at("messages").at(0).at("attachments").as_array();
  ASSERT_EQ(files.size(), 1u);
  EXPECT_EQ(files[0].at("name"), "../<b>\n.html");
}

TEST_F(WebAppTest, GivesBodiesThatComeLateOrInAPageOfTheirOwn) {
  const auto cookie = signIn();
  const auto late = data("thread?id=T7", cookie).at("messages");
  ASSERT_EQ(late.as_array().size(), 5u);
  EXPECT_EQ(late.at(2).at("html"), "");
  const auto id = std::string(late.at(2).at("id").as_string());
  EXPECT_THAT(std::string(data("body/" + id, cookie).at("html").as_string()), HasSubstr("<p>"));
  EXPECT_EQ(fetch({web("/data/body/" + id)}).status, 401u);
  EXPECT_EQ(fetch({web("/data/body/none"), "GET", {{"Cookie", cookie}}}).status, 404u);

  const auto framed = std::string(data("thread?id=T6", cookie).at("messages").at(0).at("id").as_string());
  const auto page = fetch({web("/mail/body/" + framed + ".html"), "GET", {{"Cookie", cookie}}});
  EXPECT_THAT(page.body, HasSubstr("<div class=\"v-Message-body\"><p>"));
  EXPECT_THAT(page.headers.at("content-security-policy"), HasSubstr("script-src 'self';"));
  EXPECT_EQ(fetch({web("/mail/body/" + framed + ".html")}).status, 404u) << "signed out";
  EXPECT_EQ(fetch({web("/mail/body/" + id + ".html"), "GET", {{"Cookie", cookie}}}).status, 404u);
}

TEST_F(WebAppTest, GivesUserContentWithItsTypeAndDisposition) {
  const auto host = "usercontent.localhost";
  const auto cookie = signIn();
  std::map<std::string, std::string> blobs; // name -> id
  for (const char* thread : {"T1", "T5"}) {
    for (const auto& message : data(std::string("thread?id=") + thread, cookie).at("messages").as_array())
      for (const auto& file : message.at("attachments").as_array())
        blobs[std::string(file.at("name").as_string())] = std::string(file.at("blobId").as_string());
  }
  const auto shown = fetch({web("/blob/" + blobs.at("Programme.pdf") + "/Programme.pdf?u=demo", host)});
  EXPECT_EQ(shown.headers.at("content-type"), "application/pdf");
  EXPECT_EQ(shown.headers.at("content-disposition"), "inline; filename*=UTF-8''Programme.pdf");
  EXPECT_THAT(shown.body, StartsWith("%PDF-"));
  const auto saved = fetch({web("/blob/" + blobs.at("Programme.pdf") + "/x?download=1", host)});
  EXPECT_EQ(saved.headers.at("content-disposition"), "attachment; filename*=UTF-8''Programme.pdf");

  // Hostile names arrive whole, and can't break out of the header.
  const auto outside =
      fetch({web("/blob/" + blobs.at("../../outside.txt") + "/..%2F..%2Foutside.txt?download=1", host)});
  EXPECT_EQ(outside.headers.at("content-disposition"), "attachment; filename*=UTF-8''..%2F..%2Foutside.txt");
  const auto broken = fetch({web("/blob/" + blobs.at("line\nbreak/slash.desktop") + "/x?download=1", host)});
  EXPECT_THAT(broken.headers.at("content-disposition"), HasSubstr("line%0Abreak%2Fslash.desktop"));

  const auto source = fetch({web("/source/M4?u=demo", host)});
  EXPECT_EQ(source.headers.at("content-type"), "text/plain; charset=utf-8");
  EXPECT_THAT(source.body, HasSubstr("Message-ID: <M4@mail.example.org>\r\n"));
  EXPECT_EQ(fetch({web("/source/M4")}).status, 404u) << "only on its own host";
  EXPECT_EQ(fetch({web("/mail/Inbox/", host)}).status, 404u);
}

} // namespace ondrel::demo
