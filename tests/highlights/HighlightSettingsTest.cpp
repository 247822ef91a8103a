#include "highlights/HighlightSettingsModel.h"

#include "async/VirtualEventLoop.h"
#include "jmap/MailQueries.h"
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

class HighlightSettingsTest : public testing::Test {
 protected:
  HighlightSettingsTest() {
    client.session->primaryAccounts.emplace(settings.site().devUserCapability, "u9");
    client.delay = 1s;
  }
  void answer(std::string_view preferences) {
    client.answerNext(support::FakeJMAPClient::reply({preferences}));
  }

  async::VirtualEventLoop loop;
  support::LogCapture log;
  support::FakeDefaults defaults;
  settings::AppSettings settings{defaults, support::testSite()};
  support::FakeJMAPClient client;
  jmap::MailQueries mail{client, settings, [] {}};
};

TEST_F(HighlightSettingsTest, SpeaksOfFoldersWhereTheAccountIsKnownToHaveThem) {
  constexpr std::string_view label = "Automatically label highlighted threads in Ondrel";
  // Empty: the request fails.
  const std::pair<std::string_view, std::optional<bool>> cases[] = {
      {R"({"list":[{"inLabelsMode":false}]})", false},
      {R"({"list":[{"inLabelsMode":true}]})", true},
      {R"({"list":[{}]})", std::nullopt},
      {"", std::nullopt},
  };
  for (const auto& [preferences, mode] : cases) {
    if (preferences.empty())
      client.failNext(jmap::JMAPError::notAuthenticated());
    else
      answer(preferences);
    HighlightSettingsModel model(settings, mail);
    int changes = 0;
    const auto watch = model.changed.subscribe([&] { ++changes; });
    EXPECT_EQ(model.enableText(), label) << "until it is known";
    loop.advance(2s);
    EXPECT_EQ(model.inLabelsMode(), mode);
    const bool isFolder = mode == false;
    EXPECT_EQ(model.enableText(), isFolder ? "Automatically add highlighted email to Folder" : label);
    EXPECT_EQ(model.nameText(), isFolder ? "Folder name:" : "Label name:");
    EXPECT_EQ(model.footnote().contains("folder"), isFolder);
    EXPECT_EQ(changes, mode ? 1 : 0);
  }
}

TEST_F(HighlightSettingsTest, StopsAskingWhenItGoes) {
  answer(R"({"list":[{"inLabelsMode":false}]})");
  std::optional<HighlightSettingsModel> model(std::in_place, settings, mail);
  model.reset();
  loop.advance(2s);
  EXPECT_TRUE(client.sent.empty());
  model.emplace(settings, mail);
  loop.advance(500ms);
  EXPECT_EQ(client.sent.size(), 1U);
  model.reset(); // while the answer is on its way
  loop.advance(2s);
}

} // namespace
} // namespace ondrel::highlights
