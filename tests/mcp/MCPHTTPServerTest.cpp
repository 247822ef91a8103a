#include "mcp/MCPHTTPServer.h"

#include "async/VirtualEventLoop.h"
#include "async/sleep.h"
#include "support/FakeTcpListener.h"
#include "support/LogCapture.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <chrono>
#include <stdexcept>
#include <string>
#include <vector>

namespace ondrel::mcp {

namespace {

using namespace std::chrono_literals;
using Peers = std::vector<std::shared_ptr<support::FakeTcpPeer>>;

std::string post(const std::string& body) {
  return "POST /mcp HTTP/1.1\r\nContent-Length: " + std::to_string(body.size()) + "\r\n\r\n" + body;
}

const std::string request = post("slow");

// The server on a port whose connections the test makes, in virtual time. A handler takes ten seconds,
// answers "huge" with as much as all peers together may leave unread, and throws at "throw".
class MCPHTTPServerTest : public testing::Test {
 protected:
  static async::Task<RPCAnswer> answer(std::size_t* served, std::string body) {
    ++*served;
    co_await async::sleep(10s);
    if (body == "throw")
      throw std::runtime_error("a fault");
    if (body == "huge")
      co_return RPCAnswer(200, std::string(MCPHTTPServer::mostUnread, 'x'));
    co_return RPCAnswer(200, "answer to " + body);
  }
  static async::Task<void> note(async::Task<void> task, bool* done) {
    co_await std::move(task);
    *done = true;
  }

  void start() {
    EXPECT_TRUE(server->start(7000));
    settle();
  }
  void settle() { loop.runUntilIdle(); }
  Peers connect(std::size_t count) {
    Peers peers;
    for (std::size_t i = 0; i < count; ++i)
      peers.push_back(port.connect());
    settle();
    return peers;
  }
  static long countClosed(const Peers& peers) {
    return std::ranges::count_if(peers, [](const auto& peer) { return peer->closed; });
  }

  async::VirtualEventLoop loop;
  support::LogCapture log;
  support::FakeTcpListener::Port port;
  std::size_t served = 0;
  std::unique_ptr<MCPHTTPServer> server =
      std::make_unique<MCPHTTPServer>(std::make_unique<support::FakeTcpListener>(port),
                                      [this](std::string body) { return answer(&served, std::move(body)); });
  async::Scope scope;
};

constexpr auto most = MCPHTTPServer::mostWaiting;

TEST_F(MCPHTTPServerTest, ReportsWhyItDoesNotListen) {
  const auto refused = server->start(0);
  ASSERT_FALSE(refused);
  EXPECT_EQ(refused.error(), "Invalid MCP server port: 0. Choose a port between 1 and 65535.");

  port.problem = "Address already in use";
  EXPECT_TRUE(server->start(7000));
  EXPECT_EQ(*server->failure, std::nullopt);
  settle();
  EXPECT_EQ(*server->failure, "Address already in use");
  EXPECT_EQ(log.lines(),
            std::vector<std::string>{"error network: MCP HTTP server failed: Address already in use"});
}

TEST_F(MCPHTTPServerTest, TurnsOtherMachinesAwayWithoutAByte) {
  start();
  EXPECT_EQ(log.lines(), std::vector<std::string>{"info network: MCP HTTP server ready on port 7000"});
  const auto silent = connect(most);
  for (const auto* host : {"192.0.2.7", "127.0.0.2", "::ffff:127.0.0.1", "fe80::1", "localhost", ""}) {
    const auto peer = port.connect(host);
    peer->send(request);
    loop.advance(1min);
    EXPECT_TRUE(peer->closed) << host;
    EXPECT_EQ(peer->answer, "") << host;
  }
  EXPECT_EQ(served, 0U);
  EXPECT_EQ(countClosed(silent), 0); // nobody lost a place to them
  for (const auto* host : {"127.0.0.1", "::1"}) {
    const auto peer = port.connect(host);
    peer->send(request);
    loop.advance(1min);
    EXPECT_TRUE(peer->answer.ends_with("\r\n\r\nanswer to slow")) << host;
  }
}

TEST_F(MCPHTTPServerTest, WaitsForAPeerWithoutALimitAndLingersForALimitedTime) {
  start();
  const auto peer = port.connect();
  for (const char c : request) {
    loop.advance(1h);
    EXPECT_FALSE(peer->closed);
    peer->send(std::string(1, c));
  }
  loop.advance(10s);
  EXPECT_TRUE(peer->answerEnded);
  loop.advance(1s);
  peer->send("surplus");
  loop.advance(999ms);
  EXPECT_FALSE(peer->closed);
  loop.advance(1ms);
  EXPECT_TRUE(peer->closed);

  const auto polite = port.connect();
  polite->send(request);
  loop.advance(10s);
  EXPECT_FALSE(polite->closed);
  polite->end();
  settle();
  EXPECT_TRUE(polite->closed);
}

TEST_F(MCPHTTPServerTest, GivesUpTheOldestSilentConnectionWhereThereAreTooMany) {
  start();
  const auto busy = connect(3);
  for (const auto& peer : busy)
    peer->send(request);
  const auto silent = connect(most);
  silent.at(0)->send("POST /mcp HTTP/1.1\r\n\r\n"); // answered, and lingers
  silent.at(2)->send("POST /m");                    // not complete: given up without an answer
  settle();
  EXPECT_EQ(countClosed(silent), 0);

  const auto more = connect(3);
  EXPECT_EQ(countClosed(silent), 3);
  EXPECT_TRUE(silent.at(0)->closed && silent.at(1)->closed && silent.at(2)->closed);
  EXPECT_TRUE(silent.at(0)->answer.ends_with("Missing body"));
  EXPECT_EQ(silent.at(1)->answer + silent.at(2)->answer, "");
  EXPECT_EQ(countClosed(more) + countClosed(busy), 0);

  connect(5 * most);
  loop.advance(10s);
  for (const auto& peer : busy)
    EXPECT_TRUE(peer->answer.ends_with("answer to slow"));
}

TEST_F(MCPHTTPServerTest, TakesNoMoreThanItCanWorkOn) {
  start();
  const auto busy = connect(MCPHTTPServer::mostWorking);
  for (const auto& peer : busy)
    peer->send(request);
  loop.runUntilIdle();
  const auto late = connect(20);
  for (const auto& peer : late)
    peer->send(request);
  loop.advance(9s);
  EXPECT_EQ(served, busy.size());
  EXPECT_EQ(countClosed(late), 0);
  loop.advance(1s); // answered ones make room, before they have left
  EXPECT_EQ(served, busy.size() + late.size());
  loop.advance(10s);
  for (const auto& peer : late)
    EXPECT_TRUE(peer->answer.ends_with("answer to slow"));
}

TEST_F(MCPHTTPServerTest, KeepsNoMoreUnreadAnswersThanFit) {
  start();
  const auto stuck = connect(3);
  for (const auto& peer : stuck)
    peer->stuck = true;
  for (const auto& [peer, body] : {std::pair(stuck[0], "slow"), {stuck[1], "huge"}, {stuck[2], "slow"}}) {
    peer->send(post(body));
    loop.advance(10s);
  }
  // The oldest goes, and not the one that the new answer is for.
  EXPECT_TRUE(stuck[0]->closed && stuck[1]->closed);
  EXPECT_FALSE(stuck[2]->closed);

  const auto reading = connect(2);
  for (const auto& peer : reading) {
    peer->send(post("huge"));
    loop.advance(10s);
    EXPECT_TRUE(peer->answerEnded) << "who reads gets all of it";
    EXPECT_FALSE(peer->closed);
  }
  EXPECT_TRUE(stuck[2]->closed);
}

TEST_F(MCPHTTPServerTest, AnswersThoughTheHandlerThrows) {
  start();
  for (int i = 0; i < 3; ++i) {
    const auto peer = connect(1).front();
    peer->send(post("throw"));
    loop.advance(10s);
    EXPECT_EQ(peer->answer, "HTTP/1.1 500 Error\r\nContent-Type: text/plain\r\nContent-Length: 14\r\n"
                            "Connection: close\r\n\r\nInternal error");
    EXPECT_TRUE(peer->answerEnded);
  }
  EXPECT_EQ(log.count("error network: MCP: a request could not be answered: a fault"), 3);
}

TEST_F(MCPHTTPServerTest, ServesToTheEndAfterAStop) {
  start();
  const auto peer = connect(1).front();
  peer->send(request);
  settle();
  bool stopped = false;
  bool drained = false;
  scope.spawn(note(server->stop(), &stopped));
  settle();
  EXPECT_TRUE(stopped);
  EXPECT_TRUE(port.closed);
  scope.spawn(note(server->drained(), &drained));
  const auto late = connect(1).front();
  loop.advance(10s);
  EXPECT_TRUE(peer->answer.ends_with("answer to slow"));
  EXPECT_EQ(port.waiting.size(), 1U); // not accepted
  EXPECT_FALSE(drained);
  peer->end();
  settle();
  EXPECT_TRUE(drained);
}

TEST_F(MCPHTTPServerTest, TakesItsConnectionsAlongWhenItGoes) {
  start();
  const auto busy = connect(2);
  for (const auto& peer : busy)
    peer->send(request);
  const auto silent = connect(2);
  server.reset();
  EXPECT_EQ(countClosed(busy) + countClosed(silent), 4);
  loop.advance(1min);
  EXPECT_EQ(busy.front()->answer, "");
}

} // namespace

} // namespace ondrel::mcp
