#include "SocketClient.h"
#include "async/Timer.h"
#include "mcp/MCPHTTPServer.h"
#include "platform/linux/glib/GlibEventLoop.h"
#include "platform/linux/network/GioTcpListener.h"
#include "support/LogCapture.h"
#include "support/Loopback.h"

#include <fmt/format.h>
#include <gtest/gtest.h>
#include <sys/resource.h>

#include <chrono>
#include <functional>
#include <memory>
#include <string>
#include <utility>
#include <vector>

namespace ondrel::mcp {

namespace {

using namespace std::chrono_literals;

const std::string large(std::size_t{16} << 20, 'x');

std::string post(const std::string& body) {
  return fmt::format("POST /mcp HTTP/1.1\r\nHost: localhost\r\nContent-Length: {}\r\n\r\n{}", body.size(),
                     body);
}

std::string answered(const std::string& body) {
  return fmt::format("HTTP/1.1 200 OK\r\nContent-Type: application/json\r\nContent-Length: {}\r\n"
                     "Connection: close\r\n\r\n{}",
                     body.size(), body);
}

// The soft limit that was there before.
rlim_t setDescriptorLimit(rlim_t soft) {
  rlimit limit{};
  EXPECT_EQ(getrlimit(RLIMIT_NOFILE, &limit), 0);
  const auto before = std::exchange(limit.rlim_cur, soft);
  EXPECT_EQ(setrlimit(RLIMIT_NOFILE, &limit), 0);
  return before;
}

// The server on real sockets, its peers in the same thread. It echoes, but holds "hold" until it is released,
// and answers "large" at length.
class MCPHTTPServerSocketTest : public testing::Test {
 protected:
  MCPHTTPServerSocketTest() { server = started(); }
  ~MCPHTTPServerSocketTest() override {
    server.reset();
    turns(5);
  }

  std::unique_ptr<MCPHTTPServer> started() {
    auto made = std::make_unique<MCPHTTPServer>(std::make_unique<platform::network::GioTcpListener>(),
                                                [this](std::string body) { return answer(std::move(body)); });
    EXPECT_TRUE(made->start(port));
    turns(5);
    return made;
  }
  async::Task<RPCAnswer> answer(std::string body) {
    bodies.push_back(body);
    if (body == "hold") {
      const bool released = co_await release.wait();
      hasGivenUp = !released;
    }
    co_return RPCAnswer(200, body == "large" ? large : "echo " + body);
  }
  SocketClient connect(const std::string& bytes = "", const std::string& address = "127.0.0.1") const {
    SocketClient client(address, port);
    EXPECT_TRUE(client.connected()) << address;
    client.send(bytes);
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
  static std::string answerTo(SocketClient client) {
    EXPECT_TRUE(until([&] {
      client.receive();
      return client.ended();
    })) << "after "
        << client.received().substr(0, 100);
    return client.received();
  }
  std::string exchange(const std::string& bytes) const {
    auto client = connect(bytes);
    client.endSending();
    return answerTo(std::move(client));
  }

  glib::GlibEventLoop loop;
  support::LogCapture log;
  std::vector<std::string> bodies;
  async::Signal release;
  bool hasGivenUp = false;
  const std::uint16_t port = support::freePort();
  std::unique_ptr<MCPHTTPServer> server;
  async::Scope scope;
};

TEST_F(MCPHTTPServerSocketTest, AnswersLoopbackPeersAndTurnsOthersAway) {
  const auto begin = loop.now();
  for (const auto* address : {"127.0.0.1", "::1", "::ffff:127.0.0.1"})
    EXPECT_EQ(answerTo(connect(post("{}"), address)), answered("echo {}")) << address;
  EXPECT_LT(loop.now() - begin, 3 * MCPHTTPServer::lingerTime) << "nobody need end first to see the end";
  EXPECT_EQ(exchange(""), "");
  EXPECT_TRUE(exchange("POST /mcp HTTP/1.1\r\nContent-Length: 50\r\n\r\nshort").ends_with("echo short"));

  bodies.clear();
  EXPECT_FALSE(answerTo(connect(post("{}"), "127.0.0.2")).contains("HTTP"));
  // One that has gone before anybody could look at its address.
  connect(post("{}"), "127.0.0.2").reset();
  EXPECT_EQ(exchange(post("after it")), answered("echo after it"));
  EXPECT_EQ(bodies, std::vector<std::string>{"after it"});
}

TEST_F(MCPHTTPServerSocketTest, TurnsOtherUsersAwayAndGivesUpForWhoHasGone) {
  auto another = connect();
  if (another.giveTo(65534)) {
    another.send(post("{}"));
    EXPECT_FALSE(answerTo(std::move(another)).contains("HTTP"));
  }
  {
    const auto gone = connect(post("hold"));
    EXPECT_TRUE(until([&] { return !bodies.empty(); }));
    EXPECT_FALSE(hasGivenUp);
  }
  EXPECT_TRUE(until([&] { return hasGivenUp; }));
  EXPECT_EQ(bodies, std::vector<std::string>{"hold"});
}

TEST_F(MCPHTTPServerSocketTest, AnswersPeersThatSendMoreThanItReads) {
  const std::string endless(std::size_t{4} << 20, 'x');
  for (const auto& head :
       {std::string("POST /mcp HTTP/1.1\r\nContent-Length: 4194304\r\n\r\n"), post("{}")}) {
    auto client = connect(head);
    std::string_view rest = endless;
    while (!rest.empty()) { // a peer that reads nothing before it has sent all
      rest.remove_prefix(client.send(rest.substr(0, 65536)));
      turns(1);
    }
    const auto answer = answerTo(std::move(client));
    EXPECT_TRUE(answer.starts_with("HTTP/1.1 200 OK\r\n")) << answer.substr(0, 100);
    EXPECT_TRUE(answer.ends_with(bodies.back()));
  }
  EXPECT_GE(bodies.front().size(), 131072U - 60);
  EXPECT_LE(bodies.front().size(), 131072U + 8191);
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
  const auto flood = connect("POST /mcp HTTP/1.1\r\n\r\n"); // answered: all that follows is thrown away
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
    auto client = connect(bytes);
    turns(4);
    client.reset();
    turns(10);
  }
  auto waiting = connect(post("hold"));
  ASSERT_TRUE(until([this] { return !bodies.empty(); }));
  waiting.reset();
  turns(4);
  release.send();
  auto reading = connect(post("large"));
  ASSERT_TRUE(until([&] {
    reading.receive(100);
    return !reading.received().empty();
  }));
  reading.reset();
  turns(20);
  EXPECT_EQ(exchange(post("{}")), answered("echo {}"));
}

TEST_F(MCPHTTPServerSocketTest, ServesBesideHundredsOfSilentConnections) {
  std::vector<SocketClient> silent;
  for (int i = 0; i < 500; ++i) {
    silent.push_back(connect("POST /mcp HTTP/1.1\r\nContent-"));
    turns(3);
  }
  EXPECT_EQ(exchange(post("{}")), answered("echo {}"));

  // They cost memory and nothing else: the loop has nothing to do, and goes to sleep.
  turns(1000);
  EXPECT_FALSE(g_main_context_pending(nullptr));

  silent.front().send("Length: 2\r\n\r\n{}");
  EXPECT_EQ(answerTo(std::move(silent.front())), answered("echo {}"));
}

TEST_F(MCPHTTPServerSocketTest, HasThePortAloneUntilItStops) {
  EXPECT_FALSE(server->start(0));
  const auto second = started();
  ASSERT_TRUE(*second->failure);
  EXPECT_TRUE(second->failure->value().contains("in use")) << second->failure->value();

  auto old = connect(post("hold"));
  ASSERT_TRUE(until([this] { return !bodies.empty(); }));
  scope.spawn(server->stop());
  turns(3);
  EXPECT_FALSE(SocketClient("127.0.0.1", port).connected());
  const auto stopped = std::exchange(server, started());
  EXPECT_EQ(exchange(post("{}")), answered("echo {}"));
  release.send();
  EXPECT_EQ(answerTo(std::move(old)), answered("echo hold")) << "the first one goes on with what it has";
}

TEST_F(MCPHTTPServerSocketTest, AsksForTheDescriptorsThatItMayComeToNeed) {
  const auto before = setDescriptorLimit(256);
  EXPECT_TRUE(platform::network::GioTcpListener().listen(support::freePort()));
  EXPECT_GT(setDescriptorLimit(before), MCPHTTPServer::mostWaiting + MCPHTTPServer::mostWorking);
}

TEST_F(MCPHTTPServerSocketTest, RestsWhileThereAreNoDescriptorsLeft) {
#if __has_feature(address_sanitizer) || __has_feature(undefined_behavior_sanitizer)
  GTEST_SKIP() << "the sanitizers need descriptors for checks of their own";
#endif
  auto client = connect(post("{}")); // the kernel completes it; nobody can take it
  const auto before = setDescriptorLimit(3);
  int worked = 0;
  const auto end = loop.now() + 500ms;
  while (loop.now() < end)
    worked += g_main_context_iteration(nullptr, FALSE) ? 1 : 0;
  setDescriptorLimit(before);
  EXPECT_LT(worked, 50);
  EXPECT_TRUE(log.anyStartsWith("error network: A connection could not be accepted: "));
  EXPECT_EQ(log.lines().size(), 2U); // ready, and this one, once
  EXPECT_EQ(answerTo(std::move(client)), answered("echo {}"));
}

} // namespace

} // namespace ondrel::mcp
