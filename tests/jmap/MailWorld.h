#pragma once

#include "async/Scope.h"
#include "async/VirtualEventLoop.h"
#include "jmap/mail/MailQueries.h"
#include "settings/AppSettings.h"
#include "support/FakeDesktop.h"
#include "support/FakeJMAPClient.h"
#include "support/LogCapture.h"
#include "support/RunToEnd.h"
#include "support/TestSite.h"

#include <boost/json/parse.hpp>
#include <boost/json/serialize.hpp>
#include <gtest/gtest.h>

#include <map>
#include <optional>
#include <string>

namespace ondrel::jmap {

// Replies by method of an account with one message and three mailboxes.
inline std::map<std::string, std::string> goodReplies() {
  const std::string email = R"({"id":"M1","messageId":["1@x"],"subject":"S","threadId":"T1",
      "from":[{"name":"N","email":"e@x"}],"receivedAt":"2024-01-31T10:20:30Z","mailboxIds":{"B1":true},
      "attachments":[{"blobId":"G1","name":"a","type":"t","size":1,"disposition":"attachment","cid":null}]})";
  const auto emails = R"({"state":"s1","list":[)" + email + "]}";
  const auto reply = &support::FakeJMAPClient::reply;
  return {
      {"Email/query", reply({R"({"ids":["M1"],"total":1})", emails})},
      {"Email/get", reply({emails})},
      {"Email/changes", reply({R"({"newState":"s2","created":[]})"})},
      {"Email/set", reply({R"({"updated":{"M1":null},"notUpdated":{"M2":{"type":"x"}}})"})},
      {"Mailbox/get", reply({R"({"list":[{"id":"B1","role":"inbox","name":"In box","unreadEmails":3},
          {"id":"B2","role":"trash","name":"Bin"},{"id":"B3","role":"junk"}]})"})},
      {"Thread/get", reply({R"({"list":[{"id":"T1","emailIds":["M1","M2"]}]})"})},
      {"ClientPreferences/get", reply({R"({"list":[{"inLabelsMode":true}]})"})},
  };
}

// The mail queries on a fake client, in virtual time.
struct MailWorld {
  explicit MailWorld(const std::map<std::string, std::string>& replies = goodReplies()) {
    for (const auto& [method, json] : replies)
      client.answer(method, json);
  }
  template <class T>
  T run(async::Task<T> task) {
    return support::runToEnd(loop, scope, std::move(task));
  }
  void run(async::Task<void> task) {
    const auto handle = scope.spawn(std::move(task));
    loop.advance(std::chrono::hours(1));
    EXPECT_TRUE(handle.done()) << "it never ended";
  }
  std::string sentBody(std::size_t number) const {
    return number < client.sent.size() ? boost::json::serialize(client.sent[number].body) : "nothing";
  }
  // The method calls of a request for mail, in any order of keys.
  void expectCalls(std::size_t number, std::string_view methodCalls) const {
    ASSERT_LT(number, client.sent.size());
    const boost::json::object expected{{"using", {"urn:ietf:params:jmap:core", "urn:ietf:params:jmap:mail"}},
                                       {"methodCalls", boost::json::parse(methodCalls)}};
    EXPECT_EQ(client.sent[number].body, expected) << sentBody(number);
  }

  async::VirtualEventLoop loop;
  support::LogCapture log;
  support::FakeDefaults defaults;
  settings::AppSettings settings{defaults, support::testSite()};
  support::FakeJMAPClient client;
  int badgeRefreshes = 0;
  MailQueries queries{client, settings, [this] { ++badgeRefreshes; }};
  async::Scope scope;
};

class MailTest : public testing::Test, protected MailWorld {
 protected:
  using Lines = std::vector<std::string>;
  static std::string reply(std::initializer_list<std::string_view> arguments) {
    return support::FakeJMAPClient::reply(arguments);
  }
  // The next replies, each of one arguments object.
  void answerNext(std::initializer_list<std::string_view> replies) {
    for (const auto arguments : replies)
      client.answerNext(reply({arguments}));
  }
};

} // namespace ondrel::jmap
