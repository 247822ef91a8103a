#include "program/OndrelApp.h"
#include "highlights/file/HighlightStore.h"
#include "platform/KeptFile.h"
#include "platform/NetworkMonitor.h"
#include "program/AppDelegate.h"
#include "program/AppLifecycleService.h"
#include "program/Migration.h"
#include "support/FakeDesktopServices.h"
#include "support/FakeDocumentDecoder.h"
#include "support/FakeDocuments.h"
#include "support/FakeFileReader.h"
#include "support/FakeGlobalShortcuts.h"
#include "support/FakeHttpClient.h"
#include "support/FakeLauncherBadge.h"
#include "support/FakeScripting.h"
#include "support/FakeSoftwareUpdater.h"
#include "support/FakeStatusItem.h"
#include "support/FakeTcpListener.h"
#include "support/FakeTextFormatting.h"
#include "support/FakeUserFolders.h"
#include "support/TestShell.h"

#include <gtest/gtest.h>

namespace ondrel::program {
namespace {

using namespace std::chrono_literals;
namespace json = boost::json;

const platform::ProgramInfo programInfo{"org.velmora.Ondrel", "Ondrel", "1.0", "100", true};

TEST(Migration, RemovesWhatOlderBuildsLeft) {
  struct Case {
    json::value stored;
    bool removesKeys;
    bool removesLogs;
    std::int64_t after;
    std::string running = "100";
  };
  const Case cases[] = {
      {json::value(), true, true, 100}, {71, true, true, 100},    {-5, true, true, 100},
      {72, false, true, 100},           {84, false, false, 100},  {200, false, false, 200},
      {"71", true, true, 100},          {0, false, false, 0, ""},
  };
  for (const auto& each : cases) {
    support::FakeDefaults defaults;
    support::FakeFiles files;
    defaults.values = {{"baseURL", "x"}, {"_emailIds", "x"}, {"_runJS", true}};
    if (!each.stored.is_null())
      defaults.values["_lastMigratedBuild"] = each.stored;
    const std::string logs = "/data/org.velmora.Ondrel/Logs";
    files.files[logs] = "";
    auto running = programInfo;
    running.buildNumber = each.running;
    migrate(running, defaults, files, files);
    for (const auto* old : {"baseURL", "_emailIds"})
      EXPECT_EQ(!defaults.values.contains(old), each.removesKeys) << old << each.stored;
    EXPECT_EQ(!files.exists(logs), each.removesLogs) << each.stored;
    EXPECT_EQ(defaults.values["_lastMigratedBuild"], each.after) << each.stored << " " << each.running;
    EXPECT_TRUE(defaults.values.contains("_runJS"));
  }
}

class AppDelegateTest : public testing::Test {
 protected:
  AppDelegateTest() {
    delegate.setReceivers({[this](const std::string& link) { links.push_back(link); },
                           [this](const base::Url& url) { mailtos.push_back(url.absoluteString()); }});
  }

  support::TestShell shell;
  AppLifecycleService lifecycle;
  std::vector<std::string> links;
  std::vector<std::string> mailtos;
  AppDelegate delegate{shell.application, programInfo, shell.defaults, shell.files, shell.files, lifecycle};
};

TEST_F(AppDelegateTest, DispatchesURLsByTheirScheme) {
  shell.application.urlReceived.emit("mailto:early@example.com");
  shell.application.didFinishLaunching.emit();
  const auto long1 = "email://" + std::string(1 << 20, 'x');
  for (const auto& url : {std::string("mailto:a@b"), std::string("email://abc/d?e"), std::string("email://"),
                          std::string("email:"), std::string("EMAIL://x"), std::string("Mailto:x"),
                          std::string("https://x/"), std::string("relative"), long1})
    shell.application.urlReceived.emit(url);
  EXPECT_TRUE(links.empty() && mailtos.empty()) << "the work follows on a later turn";
  shell.settle();
  EXPECT_EQ(mailtos, (std::vector<std::string>{"mailto:a@b"}));
  EXPECT_EQ(links, (std::vector<std::string>{"abc/d?e", long1.substr(8)}));
  EXPECT_FALSE(shell.log.anyStartsWith("error"));
  // What people type, and what a Message-ID may hold.
  delegate.handleGetURL("mailto:\"A B\" <a@b>?subject=x y");
  delegate.handleGetURL("email://\"a b\"@{x}:y%");
  shell.settle();
  EXPECT_EQ(mailtos.back(), "mailto:%22A%20B%22%20%3Ca@b%3E?subject=x%20y");
  EXPECT_EQ(links.back(), "\"a b\"@{x}:y%");

  for (const auto& broken :
       {std::string("\xFF\xFE"), std::string(), std::string("email://a b\n"), std::string(1 << 20, ' '),
        std::string("mailto:x\n"), std::string("mailto:\xFF")})
    delegate.handleGetURL(broken);
  shell.settle();
  EXPECT_EQ(links.size() + mailtos.size(), 5U);
  EXPECT_EQ(shell.log.count("error network: Unexpected URL: email://a b "), 1);
  delegate.setReceivers({});
  delegate.handleGetURL("mailto:a@b");
  shell.settle();
}

TEST_F(AppDelegateTest, ReopensOnlyWithoutVisibleWindows) {
  shell.application.reopenRequested.emit(false);
  shell.settle();
  EXPECT_TRUE(shell.application.all.empty()) << "nobody to ask yet";
  shell.start();
  delegate.setWindowManager(shell.manager.get());
  shell.application.reopenRequested.emit(true);
  shell.settle();
  EXPECT_EQ(shell.application.all.size(), 1U);
  EXPECT_EQ(shell.application.all[0]->calls.back(), "mode 1") << "it isn't raised either";
  EXPECT_FALSE(delegate.applicationShouldHandleReopen(false));
  shell.settle();
  EXPECT_EQ(shell.application.all.size(), 2U);
}

TEST_F(AppDelegateTest, RemembersWhetherHookmarkTookOver) {
  const std::pair<std::optional<std::string>, bool> steps[] = {
      {"com.cogsciapps.hook", true}, {std::nullopt, true}, {"org.gnome.Terminal", false}};
  for (const auto& [front, active] : steps) {
    shell.application.frontmost = front;
    shell.application.deactivating.emit();
    EXPECT_EQ(lifecycle.isHookmarkActive, active);
  }
}

class OndrelAppTest : public testing::Test {
 protected:
  std::unique_ptr<OndrelApp> launch(bool underTest = false, bool inBackground = false) {
    const PlatformAbilities platform{
        ownBundle,
        {},
        shell.application,
        shell.defaults,
        defaultsFile,
        shell.files,
        shell.files,
        fileReader,
        userFolders,
        shell.newFiles,
        shell.webViews,
        shell.panels,
        shell.uriLauncher,
        shell.clipboard,
        cookies,
        http,
        networkMonitor,
        shell.notificationCenter,
        launcherBadge,
        sleepMonitor,
        scripting,
        statusItem,
        globalShortcuts,
        defaultMailHelper,
        loginItem,
        spellChecker,
        softwareUpdater,
        backgroundApplications,
        textFormatting,
        contentTypes,
        decoder,
        printer,
        {},
        [this] { return std::make_unique<support::FakeTcpListener>(port); },
        [=](std::string_view name) { return underTest && name == "XCTestConfigurationFilePath"; },
        [](unsigned most) { return most / 2; },
        inBackground};
    auto app =
        std::make_unique<OndrelApp>(platform, site, shell.scripts, [](const web::WebServices& services) {
          return [&services](std::shared_ptr<web::WindowViewModel> model, std::shared_ptr<platform::Window>) {
            auto content = std::make_unique<support::TestShell::Content>(std::move(model), services);
            content->view.viewDidLoad();
            return content;
          };
        });
    shell.application.didFinishLaunching.emit();
    shell.settle();
    return app;
  }

  platform::ProgramInfo ownBundle = programInfo;
  settings::Site site = support::testSite();
  support::TestShell shell;
  platform::KeptFile defaultsFile{shell.files,
                                  [] { return "/config/defaults.json"; },
                                  {},
                                  {.take = [](const auto&) { return std::expected<void, std::string>(); },
                                   .text = [] { return "{}"; },
                                   .didSave = [](bool) {}}};
  support::FakeFileReader fileReader{shell.files};
  support::FakeUserFolders userFolders{shell.files};
  support::FakeCookieStore cookies;
  support::FakeHttpClient http;
  support::FakeLauncherBadge launcherBadge;
  platform::NetworkMonitor networkMonitor;
  support::FakeSleepMonitor sleepMonitor;
  support::FakeScripting scripting;
  support::FakeStatusItem statusItem;
  support::FakeGlobalShortcuts globalShortcuts;
  support::FakeDefaultMailHelper defaultMailHelper;
  support::FakeLoginItem loginItem;
  support::FakeSpellChecker spellChecker;
  support::FakeSoftwareUpdater softwareUpdater;
  support::FakeBackgroundApplications backgroundApplications;
  support::FakeTextFormatting textFormatting;
  support::FakeContentTypes contentTypes;
  support::FakeDocumentDecoder decoder;
  support::FakePrinter printer;
  support::FakeTcpListener::Port port;
};

TEST_F(OndrelAppTest, AsksOnceForTheDefault) {
  auto app = launch();
  EXPECT_EQ(shell.application.all.size(), 1U) << "the session's restoring opens the first window";
  int settingsOpened = 0;
  app->lifecycle().openSettingsAction = [&] { ++settingsOpened; };
  shell.loop.advance(90s - 1ms);
  EXPECT_TRUE(shell.panels.alerts.empty());
  shell.loop.advance(1ms);
  ASSERT_EQ(shell.panels.alerts.size(), 1U);
  EXPECT_EQ(shell.panels.alerts[0].messageText, "Ondrel is not your default email app");
  EXPECT_EQ(shell.application.activations, 1);
  EXPECT_EQ(settingsOpened, 1);
  EXPECT_EQ(shell.defaults.string("_selectedSettingsTab"), "general");
  EXPECT_EQ(shell.defaults.boolean("_defaultClientCheck"), false);

  app = launch();
  shell.loop.advance(300s);
  EXPECT_EQ(shell.panels.alerts.size(), 1U);
}

TEST_F(OndrelAppTest, NobodyIsAskedWhereThereIsNothingToAsk) {
  const auto expectSilence = [this](bool underTest) {
    const auto app = launch(underTest);
    EXPECT_EQ(shell.application.all.size(), 1U);
    shell.loop.advance(300s);
    EXPECT_TRUE(shell.panels.alerts.empty());
    EXPECT_EQ(shell.defaults.boolean("_defaultClientCheck"), std::nullopt) << "it stays to be asked";
    shell.application.all[0]->close();
    shell.settle();
  };
  expectSilence(true);
  shell.uriLauncher.mailApplication = "org.velmora.Ondrel";
  const auto app = launch();
  shell.loop.advance(300s);
  EXPECT_TRUE(shell.panels.alerts.empty());
  EXPECT_EQ(shell.defaults.boolean("_defaultClientCheck"), std::nullopt);
}

TEST_F(OndrelAppTest, DoesNotAskForWhatCannotBe) {
  auto app = launch();
  app->lifecycle().openSettingsAction = nullptr; // without settings to change it in
  shell.loop.advance(300s);
  app = launch();
  while (!shell.application.all.empty()) // nobody is there to ask
    shell.application.all.front()->close();
  shell.loop.advance(300s);
  ownBundle.isMailApplication = false;
  app = launch();
  shell.loop.advance(300s);
  EXPECT_TRUE(shell.panels.alerts.empty());
  EXPECT_EQ(shell.defaults.boolean("_defaultClientCheck"), std::nullopt);
}

TEST_F(OndrelAppTest, NotNowOpensNothing) {
  shell.panels.alertAnswer = platform::Panels::firstButton + 1;
  const auto app = launch();
  app->lifecycle().openSettingsAction = [] { FAIL(); };
  const auto activations = shell.application.activations;
  shell.loop.advance(120s);
  EXPECT_EQ(shell.application.activations, activations);
  EXPECT_EQ(shell.defaults.boolean("_defaultClientCheck"), false);
}

TEST_F(OndrelAppTest, WhatAFullDiskRefusesIsToldOnceAndSavedLater) {
  const auto app = launch();
  auto& highlights = app->highlightService().store();
  const auto& file = shell.files.files["/data/highlights.json"];
  const auto add = [&](const char* id) { highlights.add({id, "T1", "words", "", "", 0, 1.5}, "m@x"); };
  shell.files.full = true;
  add("first");
  add("second");
  defaultsFile.save();
  app->windowManager()
      .windows()
      .viewModel(shell.application.all[0])
      ->urlString.set("https://app.example.com/mail/new");
  shell.loop.advance(34s);
  ASSERT_EQ(shell.panels.alerts.size(), 1U);
  EXPECT_TRUE(
      shell.panels.alerts[0].informativeText.starts_with("no space left on device\n\nThey are kept "));
  shell.files.full = false;
  shell.loop.advance(3s);
  EXPECT_TRUE(file.contains("first") && file.contains("second")) << "after 5 and 35 seconds";
  EXPECT_TRUE(shell.files.files["/data/session.json"].contains("mail/new"));
  EXPECT_FALSE(*defaultsFile.problem());

  shell.files.full = true;
  add("third");
  shell.loop.advance(0s);
  EXPECT_EQ(shell.panels.alerts.size(), 2U) << "another run of failures";
  shell.files.full = false;
  shell.application.quit();
  EXPECT_TRUE(file.contains("third"));
}

TEST_F(OndrelAppTest, LettersOfPagesBeginHereUnlessAnotherProgramHasThem) {
  const auto app = launch();
  const auto& address = *app->windowManager().windows().viewModel(shell.application.all[0])->urlString;
  const std::string link = "mailto:a@x";
  shell.uriLauncher.mailApplication = "org.other";
  EXPECT_FALSE(app->webServices().beginLetter(link));
  EXPECT_FALSE(address.contains("compose"));
  for (const auto& handler : {std::optional<std::string>(), std::optional(programInfo.identifier)}) {
    shell.uriLauncher.mailApplication = handler;
    EXPECT_TRUE(app->webServices().beginLetter(link));
    EXPECT_TRUE(address.ends_with("compose?to=a@x"));
  }
}

TEST_F(OndrelAppTest, ACriticalAnnouncementBringsAWindowToTheFrontUnlessNobodyWantsOneYet) {
  site.announcementFeedURL = "https://project.example/feed";
  http.answer = [](const auto&) {
    return support::FakeHttpClient::ok(R"({"id":"a","message":"m","severity":"critical"})");
  };
  auto app = launch(false, true);
  EXPECT_TRUE(*app->announcements().visible);
  EXPECT_EQ(shell.application.activations, 0);
  app = launch();
  shell.application.activated.emit();
  shell.settle();
  EXPECT_EQ(http.requests.size(), 3U);
  EXPECT_EQ(shell.application.activations, 1) << "once";
  EXPECT_EQ(shell.application.all.at(0)->calls.back(), "key");
}

TEST_F(OndrelAppTest, NavigatesInTheActiveWindowAndOpensTheMessage) {
  const auto app = launch();
  const auto model = app->windowManager().windows().viewModel(shell.application.all[0]);
  model->urlString.set("https://app.example.com/mail/");
  const auto view = shell.webView(model);
  view->answer = [](const std::string&) { return json::value(true); };
  app->emailLinkService().navigate("https://app.example.com/mail/Inbox/T1.M1?u=x", "M1");
  shell.settle();
  EXPECT_EQ(view->loads.back(), "https://app.example.com/mail/Inbox/T1.M1?u=x");
  EXPECT_EQ(shell.application.activations, 1);
  EXPECT_TRUE(
      std::ranges::any_of(view->evaluations, [](const auto& s) { return s.ends_with(R"(("M1", "T1");)"); }));
  shell.application.all[0]->close();
  shell.settle();
  app->emailLinkService().navigate("https://app.example.com/mail/x");
  EXPECT_EQ(*app->windowManager().windows().viewModel(shell.application.all.at(0))->urlString,
            "https://app.example.com/mail/x");
}

} // namespace
} // namespace ondrel::program
