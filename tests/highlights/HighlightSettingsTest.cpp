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
  struct Case {
    std::string_view preferences; // empty: the request fails
    std::optional<bool> mode;
    std::string_view enable;
    std::string_view name;
    std::string_view footnote;
  };
  constexpr std::string_view label = "Automatically label highlighted threads in Ondrel";
  constexpr std::string_view labelNote = "Must match a label you've already created in Fastmail.";
  const Case cases[] = {
      {R"({"list":[{"inLabelsMode":false}]})", false, "Automatically add highlighted email to Folder",
       "Folder name:", "Must match a folder you've already created in Fastmail."},
      {R"({"list":[{"inLabelsMode":true}]})", true, label, "Label name:", labelNote},
      {R"({"list":[{}]})", std::nullopt, label, "Label name:", labelNote},
      {"", std::nullopt, label, "Label name:", labelNote},
  };
  for (const auto& [preferences, mode, enable, name, footnote] : cases) {
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
    EXPECT_EQ(model.enableText(), enable);
    EXPECT_EQ(model.nameText(), name);
    EXPECT_EQ(model.footnote(), footnote);
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

TEST_F(HighlightSettingsTest, IsTheTwoSettingsAsTheyAreStored) {
  HighlightSettingsModel model(settings, mail);
  int changes = 0;
  const auto watch = model.changed.subscribe([&] { ++changes; });
  EXPECT_FALSE(model.enabled());
  EXPECT_EQ(model.tagName(), "Highlighted");

  model.setEnabled(true);
  model.setTagName("Marks");
  EXPECT_TRUE(settings.get(settings::keys::highlightTagEnabled));
  EXPECT_EQ(settings.highlightTagName(), "Marks");
  model.setTagName("");
  EXPECT_EQ(model.tagName(), "") << "as it is shown";
  EXPECT_EQ(settings.highlightTagName(), "Highlighted") << "as it counts";
  settings.set(settings::keys::runJS, true);
  EXPECT_EQ(changes, 3) << "another setting is none of its business";
}

} // namespace
} // namespace ondrel::highlights
