#pragma once

#include "async/Scope.h"
#include "async/VirtualEventLoop.h"
#include "jmap/MailQueries.h"
#include "mcp/MCPJMAPBridge.h"
#include "settings/AppSettings.h"
#include "support/FakeDesktop.h"
#include "support/FakeJMAPClient.h"
#include "support/FakeTextFormatting.h"
#include "support/LogCapture.h"
#include "support/RunToEnd.h"
#include "support/TestSite.h"

#include <boost/json/parse.hpp>
#include <boost/json/serialize.hpp>
#include <fmt/format.h>
#include <gtest/gtest.h>

#include <optional>
#include <string>
#include <vector>

namespace ondrel::mcp {

// The mail tools on a fake account, in virtual time.
struct ToolsWorld {
  using Lines = std::vector<std::string>;

  template <class T>
  T run(async::Task<T> task) {
    return support::runToEnd(loop, scope, std::move(task));
  }
  // The text of the one piece that a tool gives, or its error behind "Error: ".
  std::string text(async::Task<ToolOutcome> task) {
    const auto outcome = run(std::move(task));
    if (!outcome)
      return "Error: " + outcome.error();
    EXPECT_EQ(outcome->size(), 1u);
    EXPECT_EQ(outcome->front().type, "text");
    return outcome->front().text;
  }

  async::VirtualEventLoop loop;
  support::LogCapture log;
  support::FakeDefaults defaults;
  settings::AppSettings settings{defaults, support::testSite()};
  support::FakeJMAPClient client;
  jmap::MailQueries mail{client, settings, [] {}};
  support::FakeTextFormatting formatting;
  Lines shown; // what the windows were told, in order
  MCPJMAPBridge bridge{client,
                       mail,
                       formatting,
                       {.openURL = [this](const std::string& url) { shown.push_back(url); },
                        .activate = [this] { shown.push_back("activated"); }}};
  async::Scope scope;
};

class ToolsTest : public testing::Test, protected ToolsWorld {};

} // namespace ondrel::mcp
