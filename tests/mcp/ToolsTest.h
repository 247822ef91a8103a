#pragma once

#include "async/VirtualEventLoop.h"
#include "jmap/mail/MailQueries.h"
#include "mcp/MCPDispatch.h"
#include "settings/AppSettings.h"
#include "support/FakeDesktop.h"
#include "support/FakeJMAPClient.h"
#include "support/FakeTextFormatting.h"
#include "support/RunToEnd.h"
#include "support/TestSite.h"

#include <boost/json/parse.hpp>
#include <boost/json/serialize.hpp>
#include <fmt/format.h>
#include <gtest/gtest.h>

#include <string>
#include <utility>
#include <vector>

namespace ondrel::mcp {

// The mail tools on a fake account, in virtual time.
class ToolsTest : public testing::Test {
 protected:
  using Lines = std::vector<std::string>;

  template <class T>
  T run(async::Task<T> task) {
    return support::runToEnd(loop, scope, std::move(task));
  }
  // A reply with the answers as they stand, and one with a list.
  static std::string reply(std::string_view answers) {
    return fmt::format(R"({{"sessionState":"s","methodResponses":[{}]}})", answers);
  }
  static std::string listed(std::string_view callId, std::string_view list) {
    return reply(fmt::format(R"(["Any/get",{{"list":{}}},"{}"])", list, callId));
  }
  // The text that a tool gives, an error behind "Error: ".
  std::string call(std::string_view tool, std::string_view arguments = "{}") {
    const auto answer = run(dispatch.handleRPC(fmt::format(
        R"({{"jsonrpc":"2.0","id":7,"method":"tools/call","params":{{"name":"{}","arguments":{}}}}})", tool,
        arguments)));
    return std::string(
        boost::json::parse(answer.second).at("result").at("content").at(0).at("text").as_string());
  }
  // The calls of the last request.
  boost::json::value calls() { return client.sent.back().body.at("methodCalls"); }

  async::VirtualEventLoop loop;
  support::FakeDefaults defaults;
  settings::AppSettings settings{defaults, support::testSite()};
  support::FakeJMAPClient client;
  jmap::MailQueries mail{client, settings, [] {}};
  support::FakeTextFormatting formatting;
  Lines shown; // what the windows were told, in order
  tools::ToolServices services{.mail = mail,
                               .formatting = formatting,
                               .openURL = [this](const std::string& url) { shown.push_back(url); },
                               .activate = [this] { shown.push_back("activated"); }};
  MCPDispatch dispatch{services};
  async::Scope scope;
};

} // namespace ondrel::mcp
