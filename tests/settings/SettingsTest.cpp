#include "settings/AppSettings.h"
#include "support/FakeDesktop.h"

#include <boost/json/parse.hpp>
#include <boost/json/serialize.hpp>
#include <gtest/gtest.h>

namespace ondrel::settings {
namespace {

namespace json = boost::json;

json::object wholeSite() {
  return json::parse(R"({
    "WebAppBaseURL": {"production": "https://app.example.com", "beta": "https://beta.example.com/"},
    "JMAPSessionURL": {"production": "https://api.example.com/jmap/session", "beta": "https://b.example.com/jmap/session"},
    "UserContentDomainSuffix": ".usercontent.example", "ServiceDomainFragment": "example.com",
    "DevUserCapability": "https://www.example.com/dev/user", "AnnouncementFeedURL": "", "ProjectSiteURL": "",
    "ProjectFAQURL": "", "DonationURL": ["https://coffee.example/", "https://pay.example/"], "SupportAddress": "help@example.com"
  })")
      .get_object();
}

TEST(Site, ReadsAllAddresses) {
  const auto site = Site::parse(json::serialize(wholeSite()));
  ASSERT_TRUE(site) << site.error();
  EXPECT_EQ(site->webAppBaseURL.production, "https://app.example.com/")
      << "a slash ends it, whatever the file has";
  EXPECT_EQ(site->webAppBaseURL.beta, "https://beta.example.com/");
  EXPECT_EQ(site->jmapSessionURL.beta, "https://b.example.com/jmap/session");
  EXPECT_EQ(site->paypalURL, "https://pay.example/");
  EXPECT_EQ(site->announcementFeedURL, "");
}

TEST(Site, NamesWhatIsWrong) {
  const auto broken = [](auto change) {
    auto object = wholeSite();
    change(object);
    const auto site = Site::parse(json::serialize(object));
    return site ? "none" : site.error();
  };
  EXPECT_EQ(broken([](auto& o) { o.erase("WebAppBaseURL"); }),
            "\"WebAppBaseURL\" is missing or not an object with \"production\" and \"beta\"");
  EXPECT_EQ(broken([](auto& o) { o["JMAPSessionURL"].as_object().erase("beta"); }),
            "\"JMAPSessionURL.beta\" is missing or empty");
  EXPECT_EQ(broken([](auto& o) { o["WebAppBaseURL"].as_object()["production"] = "app.example.com"; }),
            "\"WebAppBaseURL.production\" is not an https address");
  EXPECT_EQ(broken([](auto& o) { o["WebAppBaseURL"].as_object()["beta"] = "file:///etc/passwd"; }),
            "\"WebAppBaseURL.beta\" is not an https address");
  EXPECT_EQ(broken([](auto& o) { o["WebAppBaseURL"].as_object()["beta"] = "http://beta.example.com/"; }),
            "\"WebAppBaseURL.beta\" is not an https address");
  EXPECT_EQ(broken([](auto& o) { o["WebAppBaseURL"].as_object()["beta"] = "http://beta.localhost:80/"; }),
            "none");
  EXPECT_EQ(broken([](auto& o) { o["JMAPSessionURL"].as_object()["beta"] = "http://127.evil.example/"; }),
            "\"JMAPSessionURL.beta\" is not an https address");
  EXPECT_EQ(broken([](auto& o) { o["ServiceDomainFragment"] = 7; }),
            "\"ServiceDomainFragment\" is not a string");
  EXPECT_EQ(broken([](auto& o) { o["UserContentDomainSuffix"] = ""; }),
            "\"UserContentDomainSuffix\" is missing or empty");
  EXPECT_EQ(broken([](auto& o) { o["ProjectFAQURL"] = "nonsense"; }),
            "\"ProjectFAQURL\" is not an https address");
  EXPECT_EQ(broken([](auto& o) { o.erase("ProjectFAQURL"); }), "none");
  for (const auto* text : {"", "{", "[]", "null", "\xFF"})
    EXPECT_FALSE(Site::parse(text)) << text;
}

class AppSettingsTest : public testing::Test {
 protected:
  support::FakeDefaults defaults;
  AppSettings settings{defaults, *Site::parse(json::serialize(wholeSite()))};
};

TEST_F(AppSettingsTest, AnEmptyStoreGivesTheDefaults) {
  const std::pair<const Key<bool>*, bool> flags[] = {
      {&keys::hideOnLoseFocus, false},
      {&keys::doHideWhenInComposeMode, false},
      {&keys::composeInNewWindow, false},
      {&keys::hideInternalLinks, false},
      {&keys::showMenuBarExtra, true},
      {&keys::defaultClientCheck, true},
      {&keys::runJS, false},
      {&keys::injectCSS, false},
      {&keys::highlightTagEnabled, false},
      {&keys::mcpServerEnabled, false},
  };
  for (const auto& [key, value] : flags) {
    EXPECT_EQ(settings.get(*key), value) << key->name;
    settings.set(*key, !value);
    EXPECT_EQ(settings.get(*key), !value) << key->name;
  }
}

TEST_F(AppSettingsTest, FallsBackWhereAValueIsAbsentOrOfAnotherType) {
  defaults.values["_showMenuBarExtra"] = "no";
  EXPECT_TRUE(settings.get(keys::showMenuBarExtra));
  defaults.values["_showMenuBarExtra"] = false;
  EXPECT_FALSE(settings.get(keys::showMenuBarExtra));

  EXPECT_EQ(settings.highlightTagName(), "Highlighted");
  defaults.values["_highlightTagName"] = "";
  EXPECT_EQ(settings.highlightTagName(), "Highlighted");
  defaults.values["_highlightTagName"] = "Read this";
  EXPECT_EQ(settings.highlightTagName(), "Read this");

  const std::pair<json::value, int> ports[] = {{json::value(), 7777}, {0, 7777}, {-5, 7777},
                                               {"80", 7777},          {1, 1},    {9000, 9000}};
  for (const auto& [stored, port] : ports) {
    defaults.values["_mcpServerPort"] = stored;
    EXPECT_EQ(settings.mcpServerPort(), port) << stored;
  }
  const std::pair<json::value, SettingsTab> tabs[] = {{json::value(), SettingsTab::general},
                                                      {"nowhere", SettingsTab::general},
                                                      {"advanced", SettingsTab::advanced}};
  for (const auto& [stored, tab] : tabs) {
    defaults.values["_selectedSettingsTab"] = stored;
    EXPECT_EQ(settings.selectedSettingsTab(), tab) << stored;
  }
}

TEST_F(AppSettingsTest, OnlyBetasOwnAddressMeansBeta) {
  const std::pair<json::value, FastmailEnvironment> cases[] = {
      {json::value(), FastmailEnvironment::production},
      {"https://app.example.com/", FastmailEnvironment::production},
      {"https://beta.example.com", FastmailEnvironment::production}, // without its slash
      {"beta", FastmailEnvironment::production},
      {7, FastmailEnvironment::production},
      {"https://beta.example.com/", FastmailEnvironment::beta},
  };
  for (const auto& [stored, environment] : cases) {
    defaults.values["_fastmailEnvironment"] = stored;
    EXPECT_EQ(settings.currentEnvironment(), environment) << stored;
    EXPECT_EQ(defaults.values["_fastmailEnvironment"], stored) << "reading rewrites nothing";
  }
  settings.setEnvironment(FastmailEnvironment::beta);
  EXPECT_EQ(settings.baseURL(), "https://beta.example.com/");
}

TEST_F(AppSettingsTest, KnowsTheServicesOwnOrigins) {
  const std::pair<const char*, bool> cases[] = {
      {"https://app.example.com", true},
      {"https://beta.example.com", true},
      {"https://app.example.com:443", true},
      {"http://app.example.com", false},
      {"null", false},
      {"", false},
      {"https://x.app.example.com", false},
      {"https://app.example.com.evil.org", false},
      {"https://1.usercontent.example", false},
      {"file://", false},
  };
  for (const auto& [origin, own] : cases)
    EXPECT_EQ(settings.isServiceOrigin(origin), own) << origin;
}

} // namespace
} // namespace ondrel::settings
