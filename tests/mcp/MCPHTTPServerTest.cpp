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

constexpr auto most = MCPHTTPServer::mostWaiting;

std::string post(const std::string& body) {
  return "POST /mcp HTTP/1.1\r\nContent-Length: " + std::to_string(body.size()) + "\r\n\r\n" + body;
}

const std::string request = post("slow");

// The server on a port whose connections the test makes, in virtual time. A handler takes ten seconds,
// answers "huge" with as much as all peers together may leave unread, and throws at "throw".
class MCPHTTPServerTest : public testing::Test {
 protected:
  async::Task<RPCAnswer> answer(std::string body) {
    ++served;
    co_await async::sleep(10s);
    if (body == "throw")
      throw std::runtime_error("a fault");
    if (body == "huge")
      co_return RPCAnswer(200, std::string(MCPHTTPServer::mostUnread, 'x'));
    co_return RPCAnswer(200, "answer to " + body);
  }

  void SetUp() override { EXPECT_TRUE(server->start(7000)); }
  // So many peers, and what each sends first.
  Peers connect(std::size_t count, const std::string& bytes = "", const std::string& host = "127.0.0.1") {
    Peers peers;
    while (peers.size() < count)
      peers.push_back(port.connect(host));
    if (!bytes.empty())
      for (const auto& peer : peers)
        peer->send(bytes);
    loop.runUntilIdle();
    return peers;
  }
  static long countClosed(const Peers& peers) {
    return std::ranges::count_if(peers, [](const auto& peer) { return peer->closed; });
  }
  static bool allAnswered(const Peers& peers) {
    return std::ranges::all_of(peers,
                               [](const auto& peer) { return peer->answer.ends_with("answer to slow"); });
  }

  async::VirtualEventLoop loop;
  support::LogCapture log;
  support::FakeTcpListener::Port port;
  std::size_t served = 0;
  std::unique_ptr<MCPHTTPServer> server =
      std::make_unique<MCPHTTPServer>(std::make_unique<support::FakeTcpListener>(port),
                                      [this](std::string body) { return answer(std::move(body)); });
  async::Scope scope;
};

TEST_F(MCPHTTPServerTest, TurnsOtherMachinesAndUsersAwayWithoutAByte) {
  using Peer = platform::TcpConnection::Peer;
  const auto silent = connect(most);
  const std::pair<const char*, Peer> others[] = {
      {"192.0.2.7", Peer::sameUser}, {"127.0.0.2", Peer::sameUser},  {"::ffff:127.0.0.1", Peer::sameUser},
      {"", Peer::sameUser},          {"127.0.0.1", Peer::otherUser}, {"127.0.0.1", Peer::gone},
      {"::1", Peer::unknown}};
  for (const auto& [host, whose] : others) {
    const auto peer = port.connect(host);
    peer->peer = whose;
    peer->send(request);
    loop.advance(1min);
    EXPECT_TRUE(peer->closed && peer->answer.empty()) << host;
  }
  EXPECT_EQ(served, 0U);
  EXPECT_EQ(countClosed(silent), 0) << "nobody lost a place to them";
  for (const auto* host : {"127.0.0.1", "::1"}) {
    const auto admitted = connect(1, request, host);
    loop.advance(1min);
    EXPECT_TRUE(allAnswered(admitted)) << host;
  }
}

TEST_F(MCPHTTPServerTest, GivesUpWorkThatNobodyWaitsFor) {
  const auto gone = connect(MCPHTTPServer::mostWorking, request);
  const auto halfOpen = connect(1, request);
  halfOpen.front()->end();
  for (const auto& peer : gone)
    peer->go();
  loop.advance(1s);
  EXPECT_EQ(countClosed(gone), static_cast<long>(gone.size()));
  loop.advance(20s);
  EXPECT_TRUE(allAnswered(halfOpen)) << "it has only said that it sends no more";
}

TEST_F(MCPHTTPServerTest, WaitsForAPeerWithoutALimitAndLingersForALimitedTime) {
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
}

TEST_F(MCPHTTPServerTest, GivesUpTheOldestSilentConnectionWhereThereAreTooMany) {
  const auto busy = connect(3, request);
  const auto silent = connect(most);
  silent.at(0)->send("POST /mcp HTTP/1.1\r\n\r\n"); // answered, and lingers
  silent.at(2)->send("POST /m");                    // not complete: given up without an answer
  loop.runUntilIdle();
  EXPECT_EQ(countClosed(silent), 0);

  const auto more = connect(3);
  EXPECT_EQ(countClosed(silent), 3);
  EXPECT_TRUE(silent.at(0)->closed && silent.at(1)->closed && silent.at(2)->closed);
  EXPECT_TRUE(silent.at(0)->answer.ends_with("Missing body"));
  EXPECT_EQ(silent.at(1)->answer + silent.at(2)->answer, "");
  EXPECT_EQ(countClosed(more) + countClosed(busy), 0);

  connect(5 * most);
  loop.advance(10s);
  EXPECT_TRUE(allAnswered(busy));
}

TEST_F(MCPHTTPServerTest, TakesNoMoreThanItCanWorkOn) {
  const auto busy = connect(MCPHTTPServer::mostWorking, request);
  const auto late = connect(20, request);
  loop.advance(9s);
  EXPECT_EQ(served, busy.size());
  EXPECT_EQ(countClosed(late), 0);
  loop.advance(1s); // answered ones make room, before they have left
  EXPECT_EQ(served, busy.size() + late.size());
  loop.advance(10s);
  EXPECT_TRUE(allAnswered(late));

  const auto last = connect(2, request);
  server.reset();
  EXPECT_EQ(countClosed(last), 2) << "they go with it";
  loop.advance(1min);
}

TEST_F(MCPHTTPServerTest, KeepsNoMoreUnreadAnswersThanFit) {
  const auto stuck = connect(3);
  for (const auto& [peer, body] : {std::pair(stuck[0], "slow"), {stuck[1], "huge"}, {stuck[2], "slow"}}) {
    peer->stuck = true;
    peer->send(post(body));
    loop.advance(10s);
  }
  // The oldest goes, and not the one that the new answer is for.
  EXPECT_TRUE(stuck[0]->closed && stuck[1]->closed);
  EXPECT_FALSE(stuck[2]->closed);

  // Who reads gets all of it, and counts no longer.
  const auto reading = connect(2, post("huge"));
  loop.advance(10s);
  EXPECT_TRUE(stuck[2]->closed);
  EXPECT_EQ(countClosed(reading), 0);
  EXPECT_TRUE(reading[0]->answerEnded && reading[1]->answerEnded);
}

TEST_F(MCPHTTPServerTest, AnswersThoughTheHandlerThrows) {
  for (const auto& peer : connect(3, post("throw"))) {
    loop.advance(10s);
    EXPECT_TRUE(peer->answer.starts_with("HTTP/1.1 500 ") && peer->answerEnded) << peer->answer;
  }
}

TEST_F(MCPHTTPServerTest, ServesToTheEndAfterAStop) {
  const auto busy = connect(1, request);
  const auto stopping = scope.spawn(server->stop());
  const auto draining = scope.spawn(server->drained());
  loop.runUntilIdle();
  EXPECT_TRUE(stopping.done() && port.closed);
  connect(1);
  loop.advance(10s);
  EXPECT_TRUE(allAnswered(busy));
  EXPECT_EQ(port.waiting.size(), 1U) << "not accepted";
  EXPECT_FALSE(draining.done());
  busy.front()->end();
  loop.runUntilIdle();
  EXPECT_TRUE(draining.done());
}

} // namespace

} // namespace ondrel::mcp
