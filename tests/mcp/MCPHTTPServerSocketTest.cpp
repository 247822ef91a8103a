#include "SocketClient.h"
#include "async/Timer.h"
#include "mcp/MCPHTTPServer.h"
#include "platform/linux/GioTcpListener.h"
#include "platform/linux/glib/GlibEventLoop.h"
#include "support/LogCapture.h"

#include <fmt/format.h>
#include <gtest/gtest.h>
#include <sys/resource.h>

#include <algorithm>
#include <chrono>
#include <deque>
#include <functional>
#include <memory>
#include <string>
#include <vector>

namespace ondrel::mcp {

namespace {

using namespace std::chrono_literals;

std::string post(const std::string& body) {
  return fmt::format("POST /mcp HTTP/1.1\r\nHost: localhost\r\nContent-Length: {}\r\n\r\n{}", body.size(),
                     body);
}

std::string answered(const std::string& body) {
  return fmt::format("HTTP/1.1 200 OK\r\nContent-Type: application/json\r\nContent-Length: {}\r\n"
                     "Connection: close\r\n\r\n{}",
                     body.size(), body);
}

// What the server's handler does: echoes, but holds "hold" until told, and answers "large" with 16 MiB.
class Handler {
 public:
  async::Task<RPCAnswer> answer(std::string body) {
    bodies.push_back(body);
    if (body == "hold") {
      auto [resolver, future] = async::makeFuture<std::string>();
      held.push_back(std::move(resolver));
      const auto released = co_await std::move(future);
      co_return RPCAnswer(200, released.value_or("dropped"));
    }
    co_return RPCAnswer(200, body == "large" ? std::string(std::size_t{16} << 20, 'x') : "echo " + body);
  }
  void release(std::string answer) {
    held.front().resolve(std::move(answer));
    held.pop_front();
  }

  std::vector<std::string> bodies;
  std::deque<async::Resolver<std::string>> held;
};

// The server on real sockets, its peers in the same thread.
class MCPHTTPServerSocketTest : public testing::Test {
 protected:
  MCPHTTPServerSocketTest() { server = started(); }
  ~MCPHTTPServerSocketTest() override {
    server.reset();
    turns(5);
  }

  std::unique_ptr<MCPHTTPServer> started() {
    auto made =
        std::make_unique<MCPHTTPServer>(std::make_unique<platform::GioTcpListener>(),
                                        [this](std::string body) { return handler.answer(std::move(body)); });
    EXPECT_TRUE(made->start(static_cast<std::uint16_t>(port)));
    turns(5);
    return made;
  }
  SocketClient connect(const std::string& address = "127.0.0.1") const {
    SocketClient client(address, port);
    EXPECT_TRUE(client.connected()) << address;
    return client;
  }

  static void turns(int count) {
    for (int i = 0; i < count; ++i)
      g_main_context_iteration(nullptr, FALSE);
  }
  static bool until(const std::function<bool()>& holds) {
    bool late = false;
    const async::Timer limit(20s, [&] { late = true; });
    const async::Timer tick(1ms, [] {});
    while (!holds() && !late)
      g_main_context_iteration(nullptr, FALSE);
    return holds();
  }
  // All that comes until the server ends its side.
  static std::string answerTo(SocketClient& client) {
    EXPECT_TRUE(until([&] {
      client.receive();
      return client.ended();
    })) << "after "
        << client.received();
    return client.broken() ? "broken: " + client.received() : client.received();
  }
  std::string exchange(const std::string& bytes, const std::string& address = "127.0.0.1") const {
    auto client = connect(address);
    client.send(bytes);
    client.endSending();
    return answerTo(client);
  }

  glib::GlibEventLoop loop;
  support::LogCapture log;
  Handler handler;
  int port = freePort();
  std::unique_ptr<MCPHTTPServer> server;
  async::Scope scope;
};

TEST_F(MCPHTTPServerSocketTest, AnswersEachLoopbackPeer) {
  for (const auto* address : {"127.0.0.1", "::1", "::ffff:127.0.0.1"})
    EXPECT_EQ(exchange(post("{}"), address), answered("echo {}")) << address;
  EXPECT_EQ(exchange(""), ""); // connected, and closed without a word
  EXPECT_TRUE(exchange("POST /mcp HTTP/1.1\n\n{}").ends_with("\r\n\r\nBad Request"));
  EXPECT_TRUE(exchange("POST /mcp HTTP/1.1\r\nContent-Length: 50\r\n\r\nshort").ends_with("echo short"));
}

TEST_F(MCPHTTPServerSocketTest, PutsARequestTogetherFromItsPieces) {
  auto client = connect();
  const auto request = post("{\"a\":\"b\"}");
  for (const char c : request) {
    EXPECT_TRUE(handler.bodies.empty());
    client.send({&c, 1});
    turns(6);
  }
  const auto sent = loop.now();
  EXPECT_EQ(answerTo(client), answered("echo {\"a\":\"b\"}"));
  EXPECT_LT(loop.now() - sent, MCPHTTPServer::lingerTime); // it needn't go first to see the end

  // Without a length the head is the whole request; what comes later is too late.
  auto late = connect();
  late.send("POST /mcp HTTP/1.1\r\n\r\n");
  turns(6);
  late.send("{}");
  EXPECT_TRUE(answerTo(late).ends_with("\r\n\r\nMissing body"));
  EXPECT_TRUE(exchange("POST /mcp HTTP/1.1\r\n\r\nat once").ends_with("echo at once"));
}

TEST_F(MCPHTTPServerSocketTest, AnswersPeersThatSendMoreThanItReads) {
  const std::string endless(std::size_t{4} << 20, 'x');
  for (const auto& head :
       {std::string("POST /mcp HTTP/1.1\r\nContent-Length: 4194304\r\n\r\n"), post("{}")}) {
    auto client = connect();
    client.send(head);
    std::string_view rest = endless;
    while (!rest.empty()) { // a peer that reads nothing before it has sent all
      rest.remove_prefix(client.send(rest.substr(0, 65536)));
      turns(1);
    }
    const auto answer = answerTo(client);
    EXPECT_TRUE(answer.starts_with("HTTP/1.1 200 OK\r\n")) << answer.substr(0, 100);
    EXPECT_TRUE(answer.ends_with(handler.bodies.back()));
  }
  EXPECT_GE(handler.bodies.front().size(), 131072U - 60);
  EXPECT_LE(handler.bodies.front().size(), 131072U + 8191);
}

// Work that waits for the loop to be idle gets its turns all the same.
TEST_F(MCPHTTPServerSocketTest, LeavesTurnsToTheRestOfTheProgram) {
  int idleTurns = 0;
  const auto idle = g_idle_add(
      [](gpointer count) -> gboolean {
        ++*static_cast<int*>(count);
        return G_SOURCE_CONTINUE;
      },
      &idleTurns);
  auto flood = connect();
  flood.send("POST /mcp HTTP/1.1\r\n\r\n"); // answered: all that follows is thrown away
  const std::string more(65536, 'x');
  for (int i = 0; i < 100; ++i) {
    flood.send(more);
    turns(1);
  }
  g_source_remove(idle);
  EXPECT_GE(idleTurns, 25);
}

TEST_F(MCPHTTPServerSocketTest, SurvivesPeersThatBreakOff) {
  for (const auto* bytes : {"", "POST /m", "POST /mcp HTTP/1.1\r\nContent-Length: 9\r\n\r\n{"}) {
    auto client = connect();
    client.send(bytes);
    turns(4);
    client.reset();
    turns(10);
  }
  auto waiting = connect();
  waiting.send(post("hold"));
  ASSERT_TRUE(until([this] { return !handler.held.empty(); }));
  waiting.reset();
  turns(4);
  handler.release("for nobody");
  auto reading = connect();
  reading.send(post("large"));
  ASSERT_TRUE(until([&] {
    reading.receive(1000);
    return !reading.received().empty();
  }));
  reading.reset();
  turns(20);
  EXPECT_EQ(exchange(post("{}")), answered("echo {}"));
}

TEST_F(MCPHTTPServerSocketTest, SendsALargeAnswerToASlowReader) {
  auto client = connect();
  client.send(post("large"));
  ASSERT_TRUE(until([&] {
    client.receive(100);
    return client.received().size() > 1000;
  }));
  EXPECT_EQ(exchange(post("{}")), answered("echo {}")); // meanwhile
  EXPECT_TRUE(answerTo(client) == answered(std::string(std::size_t{16} << 20, 'x')));
}

TEST_F(MCPHTTPServerSocketTest, AnswersInTheOrderInWhichAnswersAreReady) {
  auto first = connect();
  first.send(post("hold"));
  ASSERT_TRUE(until([this] { return handler.held.size() == 1; }));
  first.endSending(); // it still gets its answer
  auto second = connect();
  second.send(post("hold"));
  ASSERT_TRUE(until([this] { return handler.held.size() == 2; }));
  EXPECT_EQ(exchange(post("third")), answered("echo third"));
  handler.held.back().resolve("second");
  EXPECT_EQ(answerTo(second), answered("second"));
  handler.release("first");
  EXPECT_EQ(answerTo(first), answered("first"));
}

TEST_F(MCPHTTPServerSocketTest, TurnsOtherAddressesOfThisMachineAway) {
  const auto address = ownAddress();
  if (address.empty())
    GTEST_SKIP() << "this machine has no address but loopback";
  EXPECT_EQ(exchange("", address), "");
  auto client = connect(address);
  client.send(post("{}"));
  client.receive();
  until([&] {
    client.receive();
    return client.ended();
  });
  EXPECT_EQ(client.received(), "");

  // One that has gone before anybody could look at its address: its request must not be worked on.
  auto gone = connect(address);
  gone.send(post("{}"));
  gone.reset();
  EXPECT_EQ(exchange(post("after it")), answered("echo after it"));
  EXPECT_EQ(handler.bodies, std::vector<std::string>{"after it"});
}

TEST_F(MCPHTTPServerSocketTest, ServesBesideHundredsOfSilentConnections) {
  std::vector<SocketClient> silent;
  for (int i = 0; i < 500; ++i) {
    silent.push_back(connect());
    turns(3);
  }
  for (const auto& client : silent)
    client.send("POST /mcp HTTP/1.1\r\nContent-");
  turns(200);
  EXPECT_EQ(exchange(post("{}")), answered("echo {}"));

  // They cost memory and nothing else: the loop has nothing to do, and goes to sleep.
  turns(1000);
  EXPECT_FALSE(g_main_context_pending(nullptr));

  silent.front().send("Length: 2\r\n\r\n{}");
  EXPECT_EQ(answerTo(silent.front()), answered("echo {}"));
  for (int i = 0; i < 100; ++i)
    silent.push_back(connect());
  EXPECT_EQ(exchange(post("{}")), answered("echo {}"));
}

TEST_F(MCPHTTPServerSocketTest, StartsAgainOnThePortWhileARequestIsServed) {
  auto old = connect();
  old.send(post("hold"));
  ASSERT_TRUE(until([this] { return !handler.held.empty(); }));
  EXPECT_EQ(exchange(post("{}")), answered("echo {}"));
  for (int i = 0; i < 20; ++i) {
    scope.spawn(server->stop());
    turns(3);
    EXPECT_FALSE(SocketClient("127.0.0.1", port).connected());
    // The first one goes on with what it has.
    static std::vector<std::unique_ptr<MCPHTTPServer>> stopped;
    stopped.push_back(std::exchange(server, started()));
    EXPECT_EQ(exchange(post("{}")), answered("echo {}"));
    if (i == 19) {
      handler.release("late");
      EXPECT_EQ(answerTo(old), answered("late"));
      stopped.clear();
    }
  }
  EXPECT_FALSE(log.anyStartsWith("error"));
}

TEST_F(MCPHTTPServerSocketTest, ReportsAPortThatIsInUse) {
  const auto second = started();
  ASSERT_TRUE(*second->failure);
  EXPECT_TRUE(second->failure->value().contains("in use")) << second->failure->value();
  EXPECT_EQ(log.count("error network: MCP HTTP server failed: " + second->failure->value()), 1);
  scope.spawn(second->stop());
  turns(3);
  EXPECT_EQ(exchange(post("{}")), answered("echo {}"));
}

TEST_F(MCPHTTPServerSocketTest, AsksForTheDescriptorsThatItMayComeToNeed) {
  rlimit before{};
  ASSERT_EQ(getrlimit(RLIMIT_NOFILE, &before), 0);
  const rlimit few{256, before.rlim_max};
  ASSERT_EQ(setrlimit(RLIMIT_NOFILE, &few), 0);
  platform::GioTcpListener another;
  EXPECT_TRUE(another.listen(static_cast<std::uint16_t>(freePort())));
  rlimit after{};
  ASSERT_EQ(getrlimit(RLIMIT_NOFILE, &after), 0);
  EXPECT_EQ(after.rlim_cur, std::min<rlim_t>(4096, before.rlim_max));
  ASSERT_EQ(setrlimit(RLIMIT_NOFILE, &before), 0);
}

TEST_F(MCPHTTPServerSocketTest, RestsWhileThereAreNoDescriptorsLeft) {
#if __has_feature(address_sanitizer) || __has_feature(undefined_behavior_sanitizer)
  GTEST_SKIP() << "the sanitizers need descriptors for checks of their own";
#endif
  auto client = connect(); // the kernel completes it; nobody can take it
  rlimit before{};
  ASSERT_EQ(getrlimit(RLIMIT_NOFILE, &before), 0);
  const rlimit none{3, before.rlim_max};
  ASSERT_EQ(setrlimit(RLIMIT_NOFILE, &none), 0);
  client.send(post("{}"));
  int worked = 0;
  const auto end = loop.now() + 500ms;
  while (loop.now() < end) {
    worked += g_main_context_iteration(nullptr, FALSE) ? 1 : 0;
  }
  ASSERT_EQ(setrlimit(RLIMIT_NOFILE, &before), 0);
  EXPECT_LT(worked, 50);
  EXPECT_TRUE(log.anyStartsWith("error network: A connection could not be accepted: "));
  EXPECT_EQ(log.lines().size(), 2U); // ready, and this one, once
  EXPECT_EQ(answerTo(client), answered("echo {}"));
}

} // namespace

} // namespace ondrel::mcp
