#include "integrations/AnnouncementService.h"
#include "platform/NetworkMonitor.h"
#include "support/TestShell.h"

#include <gtest/gtest.h>

namespace ondrel::integrations {
namespace {

using namespace std::chrono_literals;

class AnnouncementTest : public testing::Test {
 protected:
  void start(std::string feed = "https://project.example/feed") {
    auto site = support::testSite();
    site.announcementFeedURL = std::move(feed);
    settings.emplace(shell.defaults, site);
    service.emplace(AnnouncementService::Services{shell.http, network, shell.application, shell.uriLauncher,
                                                  *settings, "1.10"});
    service->start(12h);
    shell.settle();
  }

  support::TestShell shell;
  platform::NetworkMonitor network;
  std::optional<settings::AppSettings> settings;
  std::optional<AnnouncementService> service;
  const std::vector<platform::HttpRequest>& asked = shell.http.requests;
};

TEST_F(AnnouncementTest, ShowsWhatIsForThisVersionAndTime) {
  const std::pair<std::string, std::string> cases[] = {
      {R"("link":null,"expiresAt":"2999-01-01T00:00:00Z","more":1)", ""},
      {R"("minAppVersion":"1.9","maxAppVersion":"1.10.0","link":"https://x.example/")", "https://x.example/"},
      {R"("link":"http://localhost:1/")", "http://localhost:1/"},
      {R"("link":"http://x.example/")", ""},
      {R"("link":"file:///etc/passwd")", ""},
      {R"("minAppVersion":"1.10.1")", "none"},
      {R"("maxAppVersion":"1.9.x")", "none"},
      {R"("expiresAt":"2020-01-01T00:00:00Z")", "none"},
      {R"("link":"a b")", "link is not an address"},
      {R"("expiresAt":"soon")", "expiresAt is not a date"},
      {R"("severity":"loud")", "severity is no severity"},
      {R"("message":1)", "message is not a string"},
      {R"("more":")" + std::string(70000, 'x') + '"', "The response is too large."}};
  start();
  for (const auto& [fields, expected] : cases) {
    shell.http.answer = [text = fields](const auto&) {
      return support::FakeHttpClient::ok(R"({"id":"a","message":"m","severity":"info",)" + text + "}");
    };
    shell.application.activated.emit();
    shell.settle();
    const bool isShown = service->visible->has_value();
    service->openLink();
    shell.uriLauncher.opened.resize(1); // an empty one where nothing was opened
    const auto failures = shell.log.count("error network: Announcement fetch failed: " + expected);
    EXPECT_TRUE(isShown ? shell.uriLauncher.opened[0] == expected : expected == "none" || failures == 1)
        << fields.substr(0, 99);
    shell.uriLauncher.opened.clear();
    for (const auto* dismissed : {"other", "a"}) {
      EXPECT_EQ(service->visible->has_value(), isShown);
      shell.defaults.set(settings::keys::dismissedAnnouncementID, std::string(dismissed));
    }
    EXPECT_FALSE(service->visible->has_value()) << "wherever it was dismissed";
    shell.defaults.set(settings::keys::dismissedAnnouncementID, std::string());
  }
}

TEST_F(AnnouncementTest, AsksInTurnAndOnlyWhereThereIsAWay) {
  start("");
  shell.application.activated.emit();
  shell.settle();
  EXPECT_TRUE(asked.empty()) << "there is no feed";
  start();
  shell.loop.advance(12h);
  EXPECT_TRUE(asked.size() == 2 && asked[0].staysAtOrigin);
  shell.http.delay = 2s;
  for (int i = 0; i < 3; ++i, shell.loop.advance(500ms))
    shell.application.activated.emit();
  shell.loop.advance(10s);
  EXPECT_EQ(asked.size(), 4U) << "once for all that was wanted meanwhile";

  network.isAvailable.set(false);
  shell.loop.advance(24h);
  EXPECT_EQ(asked.size(), 4U);
  for (const bool available : {true, false, true}) {
    network.isAvailable.set(available);
    shell.loop.advance(3s);
  }
  EXPECT_EQ(asked.size(), 5U) << "for what was missed, once";
}

} // namespace
} // namespace ondrel::integrations
