#include "integrations/ServerLocationChecker.h"
#include "support/FakeJMAPClient.h"
#include "support/TestShell.h"

#include <gtest/gtest.h>

namespace ondrel::integrations {
namespace {

TEST(ServerLocationTest, ShowsTheFrontEndAndTheAccountWhereItIsKnown) {
  support::TestShell shell;
  support::FakeJMAPClient session;
  ServerLocationChecker checker({shell.http, shell.settings, &session, shell.application, shell.panels});
  const auto expectText = [&](const platform::HttpHeaders& headers, const std::string& expected) {
    shell.http.answer = [headers](const auto& request) {
      return platform::HttpResponse{.headers = request.method == "HEAD" ? headers : platform::HttpHeaders()};
    };
    shell.panels.alerts.clear();
    checker.show();
    shell.settle();
    checker.show(); // one at a time
    shell.loop.advance(std::chrono::minutes(1));
    ASSERT_EQ(shell.panels.alerts.size(), 1U);
    EXPECT_EQ(shell.panels.alerts[0].informativeText, expected);
  };
  shell.http.delay = std::chrono::seconds(2);
  session.session->apiUrl = "https://phl.api.example.com/jmap/";
  const platform::HttpHeaders headers{{"X-Frontend", "ams-\nfront-1"}};
  const std::string frontend = "Frontend: Amsterdam, Netherlands\n(ams- front-1 — app.example.com)";
  expectText(headers, frontend + "\n\nAccount data: Philadelphia, USA\n(phl.api.example.com)");
  session.signInShown = true;
  expectText(headers, frontend);
  EXPECT_EQ(session.sessionFetches, 1) << "who is signed out doesn't wait for it";
  session.signInShown = false;
  session.session = std::unexpected(jmap::JMAPError::badResponse());
  expectText(headers, frontend);
  expectText({{"x-frontend", "--"}}, "Frontend: Unknown location\n(-- — app.example.com)");
  expectText({}, "The server didn't return location information.");
}

} // namespace
} // namespace ondrel::integrations
