#include "highlights/HighlightSettingsModel.h"

#include "async/VirtualEventLoop.h"
#include "jmap/mail/MailQueries.h"
#include "settings/AppSettings.h"
#include "support/FakeDesktop.h"
#include "support/FakeJMAPClient.h"
#include "support/LogCapture.h"
#include "support/TestSite.h"

#include <gtest/gtest.h>

#include <chrono>

namespace ondrel::highlights {
namespace {

using namespace std::chrono_literals;

// The window's test has the words and the rows; this one has what the account may answer, and late.
TEST(HighlightSettings, SpeakOfFoldersWhereTheAccountIsKnownToHaveThem) {
  async::VirtualEventLoop loop;
  const support::LogCapture log;
  support::FakeDefaults defaults;
  settings::AppSettings settings{defaults, support::testSite()};
  support::FakeJMAPClient client;
  jmap::MailQueries mail{client, settings, [] {}};
  client.session->primaryAccounts.emplace(settings.site().devUserCapability, "u9");
  client.delay = 1s;
  const std::string_view preferences[] = {R"({"list":[{"inLabelsMode":false}]})",
                                          R"({"list":[{"inLabelsMode":true}]})", R"({"list":[{}]})"};
  std::optional<HighlightSettingsModel> model;
  for (const auto answer : preferences) {
    client.answerNext(support::FakeJMAPClient::reply({answer}));
    model.emplace(settings, mail);
    EXPECT_EQ(model->nameText(), "Label name:") << "until it is known";
    loop.advance(2s);
    EXPECT_EQ(model->nameText(), answer == preferences[0] ? "Folder name:" : "Label name:") << answer;
  }
  model.emplace(settings, mail);
  loop.advance(500ms);
  EXPECT_EQ(client.sent.size(), 4U);
  model.reset(); // while the answer is on its way
  loop.advance(2s);
}

} // namespace
} // namespace ondrel::highlights
