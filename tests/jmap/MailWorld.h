#pragma once

#include "async/Scope.h"
#include "async/VirtualEventLoop.h"
#include "jmap/MailQueries.h"
#include "settings/AppSettings.h"
#include "support/FakeDesktop.h"
#include "support/FakeJMAPClient.h"
#include "support/LogCapture.h"
#include "support/RunToEnd.h"
#include "support/TestSite.h"

#include <boost/json/parse.hpp>
#include <boost/json/serialize.hpp>
#include <gtest/gtest.h>

#include <optional>
#include <string>

namespace ondrel::jmap {

// The mail queries on a fake client, in virtual time.
struct MailWorld {
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
};

} // namespace ondrel::jmap
