// Bodies that are read while they arrive.
#include "HttpClientFixture.h"

#include <atomic>

namespace ondrel::platform {

namespace {

// A server whose stream the test feeds.
class HttpClientStreamTest : public HttpClientTest {
 protected:
  void open() {
    auto opened = run(client->open({.url = server.url(), .timeout = 500ms, .bodyTimeout = silence}));
    ASSERT_TRUE(opened) << opened.error().description;
    stream = std::move(*opened);
    ASSERT_TRUE(runUntil([this] { return peer != nullptr; }));
  }
  static std::string told(const HttpResult<std::string>& bytes) {
    if (!bytes)
      return std::to_string(bytes.error().code);
    return bytes->empty() ? "end" : *bytes;
  }
  std::string next() { return told(run(stream->read())); }
  void chunk(const std::string& text) {
    peer.load()->send(std::to_string(text.size()) + "\r\n" + text + "\r\n");
  }

  std::optional<async::Duration> silence; // of the body, at most
  std::string head = "HTTP/1.1 200 OK\r\nTransfer-Encoding: chunked\r\n\r\n";
  std::atomic<HttpClientPeer*> peer = nullptr;
  std::atomic<bool> ended = false;
  std::unique_ptr<HttpStream> stream;
  HttpClientServer server{[this](HttpClientPeer& connection) {
    connection.request();
    connection.send(head);
    peer = &connection;
    ended = connection.seesEnd();
  }};
};

TEST_F(HttpClientStreamTest, GivesBytesAsTheyCome) {
  open();
  EXPECT_EQ(stream->status(), 200);
  EXPECT_FALSE(server.requests().at(0).contains("Accept-Encoding"));
  chunk("one");
  EXPECT_EQ(next(), "one");
  std::optional<HttpResult<std::string>> read;
  async::Scope scope;
  scope.spawn(keep(stream->read(), read));
  runFor(700ms); // longer than the head may take
  ASSERT_FALSE(read);
  client.reset(); // the stream goes on without it
  chunk("two\n");
  ASSERT_TRUE(runUntil([&] { return read.has_value(); }));
  EXPECT_EQ(told(*read), "two\n");
  peer.load()->send("0\r\n\r\n");
  EXPECT_EQ(next(), "end");
  EXPECT_EQ(next(), "end");
}

TEST_F(HttpClientStreamTest, TellsAnEndInTheMiddle) {
  open();
  chunk("one");
  EXPECT_EQ(next(), "one");
  peer.load()->send("9\r\nhalf");
  EXPECT_EQ(next(), "half");
  peer.load()->close();
  EXPECT_EQ(next(), std::to_string(WebError::networkConnectionLost));
}

TEST_F(HttpClientStreamTest, GivesTogetherWhatHasArrived) {
  open();
  peer.load()->send("3\r\none\r\n3\r\ntwo\r\n5\r\nth");
  runFor(20ms);
  EXPECT_EQ(next(), "onetwoth");
  EXPECT_FALSE(stream->hasMore());
  const std::string much(100000, 'x');
  peer.load()->send("ree\r\n186A0\r\n" + much + "\r\n");
  runFor(20ms);
  const auto first = next();
  EXPECT_LT(first.size(), much.size());
  EXPECT_TRUE(stream->hasMore());
  EXPECT_EQ(first + next(), "ree" + much);
  EXPECT_FALSE(stream->hasMore());

  peer.load()->send("9\r\nhalf");
  peer.load()->close();
  runFor(20ms);
  EXPECT_EQ(next(), "half");
  EXPECT_EQ(next(), std::to_string(WebError::networkConnectionLost)) << "not forgotten";
}

TEST_F(HttpClientStreamTest, IsOneWhateverTheStatus) {
  head = response("401 Unauthorized", "who?");
  open();
  EXPECT_EQ(stream->status(), 401);
  EXPECT_EQ(next(), "who?");
  EXPECT_EQ(next(), "end");
}

TEST_F(HttpClientStreamTest, ItsHeadHasALimitOfTime) {
  head = "";
  const auto opened = run(client->open({.url = server.url(), .timeout = 100ms}));
  ASSERT_FALSE(opened);
  EXPECT_EQ(opened.error().code, WebError::timedOut);
  EXPECT_TRUE(runUntil([&] { return ended.load(); }, 1s));
}

TEST_F(HttpClientStreamTest, ItsBodyHasALimitOfSilenceWhereItIsAskedFor) {
  silence = 100ms;
  head = "HTTP/1.1 200 OK\r\nContent-Length: 9\r\n\r\nhalf";
  open();
  EXPECT_EQ(stream->length(), 9);
  EXPECT_EQ(next(), "half");
  EXPECT_EQ(next(), std::to_string(WebError::timedOut));
}

TEST_F(HttpClientStreamTest, EndsWhenItIsDropped) {
  open();
  chunk("unread");
  stream.reset();
  EXPECT_TRUE(runUntil([&] { return ended.load(); }, 1s));
}

TEST_F(HttpClientStreamTest, EndsUnderItsReaderAndWithOneThatIsDropped) {
  for (const bool readerGoesFirst : {false, true}) {
    ended = false;
    peer = nullptr;
    open();
    std::optional<HttpResult<std::string>> read;
    std::optional<async::Scope> scope(std::in_place);
    scope->spawn(keep(stream->read(), read));
    runFor(20ms);
    if (readerGoesFirst)
      scope.reset();
    stream.reset();
    EXPECT_TRUE(runUntil([&] { return ended.load(); }, 1s));
    EXPECT_EQ(runUntil([&] { return read.has_value(); }, 100ms), !readerGoesFirst);
    if (read)
      EXPECT_EQ(told(*read), std::to_string(WebError::cancelled));
  }
}

} // namespace

} // namespace ondrel::platform
