#include "ui/settings/SettingsWindow.h"

#include "ShellTest.h"
#include "integrations/DefaultEmailClient.h"
#include "integrations/LoginItemManager.h"
#include "integrations/ScriptsManager.h"
#include "integrations/SpellingSettings.h"
#include "integrations/UpdateManager.h"
#include "jmap/mail/MailQueries.h"
#include "mcp/MCPServerManager.h"
#include "mcp/MCPSettingsModel.h"
#include "mcp/SetupCommand.h"
#include "settings/EnvironmentWatch.h"
#include "shortcuts/KeyboardShortcuts.h"
#include "support/FakeDesktopServices.h"
#include "support/FakeFileReader.h"
#include "support/FakeGlobalShortcuts.h"
#include "support/FakeJMAPClient.h"
#include "support/FakeSoftwareUpdater.h"
#include "support/FakeTextFormatting.h"
#include "support/FakeUserFolders.h"
#include "support/LogCapture.h"
#include "ui/settings/MCPSettingsView.h"

namespace ondrel::ui {
namespace {

using namespace std::chrono_literals;
using settings::FastmailEnvironment;
namespace keys = settings::keys;

class SettingsWindowTest : public ShellTest {
 protected:
  void SetUp() override {
    ShellTest::SetUp();
    client.session->primaryAccounts.emplace(shell.settings.site().devUserCapability, "u9");
    answerMode(true);
  }
  void TearDown() override {
    window.reset();
    ShellTest::TearDown();
  }

  void answerMode(bool inLabelsMode) {
    client.answer("ClientPreferences/get",
                  support::FakeJMAPClient::reply({inLabelsMode ? R"({"list":[{"inLabelsMode":true}]})"
                                                               : R"({"list":[{"inLabelsMode":false}]})"}));
  }
  void open() {
    window->show();
    shell.settle();
  }
  GtkWidget* root() { return GTK_WIDGET(window->window()); }
  GtkWidget* row(const char* name) { return find(root(), name); }
  bool visible(const char* name) { return gtk_widget_get_visible(row(name)); }
  void clickRow(const char* name) { adw_action_row_activate(ADW_ACTION_ROW(row(name))); }
  std::string subtitle(const char* name) {
    const char* text = adw_action_row_get_subtitle(ADW_ACTION_ROW(row(name)));
    return text ? text : "";
  }
  // What is in the row for the user to change.
  GtkWidget* controlOf(const char* name) {
    return adw_action_row_get_activatable_widget(ADW_ACTION_ROW(row(name)));
  }
  bool isOn(const char* name) { return gtk_switch_get_active(GTK_SWITCH(controlOf(name))); }
  std::string fieldText(const char* name) { return gtk_editable_get_text(GTK_EDITABLE(controlOf(name))); }
  void type(const char* name, const char* text) {
    gtk_editable_set_text(GTK_EDITABLE(controlOf(name)), text);
  }
  void pressEnter(const char* name) { g_signal_emit_by_name(controlOf(name), "activate"); }
  bool says(const std::string& text) {
    const auto texts = visibleTexts(root());
    return std::ranges::find(texts, text) != texts.end();
  }

  support::FakeJMAPClient client;
  jmap::MailQueries mail{client, shell.settings, [] {}};
  mcp::MCPServerManager server{shell.settings, shell.files, shell.files, {}}; // never started
  mcp::MCPSettingsModel mcp{shell.settings, server, shell.clipboard};
  support::FakeGlobalShortcuts globalShortcuts;
  shortcuts::KeyboardShortcuts shortcutKeys{globalShortcuts, shell.defaults};
  support::FakeDefaultMailHelper helper;
  support::FakeLoginItem loginItem;
  support::FakeDesktopServices desktopServices;
  integrations::DefaultEmailClient defaultEmail{
      helper, shell.uriLauncher, {"org.example.Mail", "Mail", "1", "1", true}};
  integrations::LoginItemManager login{loginItem};
  support::FakeSpellChecker spellChecker;
  integrations::SpellingSettings spelling{shell.settings, spellChecker};
  support::FakeUserFolders folders{shell.files};
  support::FakeFileReader reader{shell.files};
  integrations::ScriptsManager scripts{
      {shell.files, folders, shell.files, reader, shell.uriLauncher, shell.settings, "Mail"}};
  support::FakeSoftwareUpdater updater;
  support::FakeTextFormatting formatting;
  integrations::UpdateManager updates{{.updater = updater,
                                       .settings = shell.settings,
                                       .notifications = shell.notifications,
                                       .formatting = formatting,
                                       .programInfo = {"org.example.Mail", "Mail", "1.0", "1"},
                                       .clock = [] { return integrations::WallTime(24h * 365); },
                                       .showUpdates = {},
                                       .restart = [this] { opened.push_back("restart"); }}};
  std::vector<std::string> opened;
  GtkWindow* parent = nullptr;
  std::optional<SettingsWindow> window = std::optional<SettingsWindow>(
      std::in_place,
      SettingsServices{.settings = shell.settings,
                       .mail = mail,
                       .mcp = mcp,
                       .shortcuts = shortcutKeys,
                       .defaultEmail = defaultEmail,
                       .loginItem = login,
                       .spelling = spelling,
                       .userScripts = scripts,
                       .updates = updates,
                       .desktopServices = desktopServices,
                       .openURL = [this](auto& url) { opened.push_back(url); },
                       .openMailto = [this](auto& url) { opened.push_back(url); }},
      nullptr, [this] { return parent; });
};

TEST_F(SettingsWindowTest, ThereIsOneAndItAsksTheAccountEachTimeItIsOpened) {
  EXPECT_EQ(window->window(), nullptr);
  open();
  auto* first = window->window();
  EXPECT_STREQ(gtk_window_get_title(first), "Settings");
  EXPECT_FALSE(gtk_window_get_modal(first));
  open();
  EXPECT_EQ(window->window(), first);
  EXPECT_EQ(client.sent.size(), 1U);
  gtk_window_close(first);
  EXPECT_TRUE(runUntil([&] { return window->window() == nullptr; }));
  shell.settings.set(keys::highlightTagEnabled, true);
  open();
  EXPECT_EQ(client.sent.size(), 2U);
  EXPECT_TRUE(isOn("highlight-tag"));
  window.reset();
  shell.settings.set(keys::highlightTagEnabled, false); // nobody is there to follow
}

TEST_F(SettingsWindowTest, TellsWhatTheDesktopLacks) {
  open();
  const auto tells = [this](const char* title) {
    return runUntil([&] {
      shell.loop.advance(1s); // the desktop answers late
      auto* shown = row("desktop-service");
      return shown && std::string_view(adw_preferences_row_get_title(ADW_PREFERENCES_ROW(shown))) == title;
    });
  };
  EXPECT_TRUE(tells("Nothing Is Missing"));
  // Who has started or ended a service comes back to this window.
  for (const auto& [lacks, title] :
       std::vector<std::pair<std::vector<platform::DesktopService>, const char*>>{
           {{platform::DesktopService::portal}, "No Desktop Portal"}, {{}, "Nothing Is Missing"}}) {
    desktopServices.lacks = lacks;
    g_object_notify(G_OBJECT(window->window()), "is-active");
    EXPECT_TRUE(tells(title));
  }
}

TEST_F(SettingsWindowTest, StaysWhenTheWindowInFrontOfWhichItWasOpenedGoes) {
  showWidget(gtk_drawing_area_new());
  parent = topLevels.back().get();
  open();
  EXPECT_EQ(gtk_window_get_transient_for(window->window()), parent);
  ASSERT_TRUE(runUntil([&] { return gtk_widget_get_mapped(root()); }));
  open();
  // As a top-level goes whose last tab was closed.
  gtk_widget_set_visible(GTK_WIDGET(parent), FALSE);
  gtk_window_destroy(std::exchange(parent, nullptr));
  topLevels.pop_back();
  for (int turn = 0; turn < 100; ++turn)
    g_main_context_iteration(nullptr, FALSE);
  ASSERT_NE(window->window(), nullptr);
  EXPECT_TRUE(gtk_widget_get_mapped(root()));
  open();
  EXPECT_EQ(gtk_window_get_transient_for(window->window()), nullptr);
}

TEST_F(SettingsWindowTest, BelongsToNoWindowThatBelongsToIt) {
  open();
  parent = GTK_WINDOW(gtk_window_new()); // a question about a setting
  topLevels.push_back(glib::share(parent));
  gtk_window_set_transient_for(parent, window->window());
  open();
  EXPECT_EQ(gtk_window_get_transient_for(window->window()), nullptr);
}

TEST_F(SettingsWindowTest, LabellingIsTurnedOnByItsRowAndNamed) {
  open();
  EXPECT_FALSE(visible("highlight-tag-name"));
  clickRow("highlight-tag");
  EXPECT_TRUE(shell.settings.get(keys::highlightTagEnabled));
  EXPECT_TRUE(isOn("highlight-tag") && visible("highlight-tag-name"));
  EXPECT_EQ(fieldText("highlight-tag-name"), "Highlighted");

  type("highlight-tag-name", "Marks & <b>");
  EXPECT_EQ(shell.settings.highlightTagName(), "Marks & <b>");
  type("highlight-tag-name", "");
  EXPECT_EQ(shell.defaults.string(keys::highlightTagName.name), "");
  EXPECT_STREQ(gtk_entry_get_placeholder_text(GTK_ENTRY(controlOf("highlight-tag-name"))), "Highlighted");

  shell.defaults.set(keys::highlightTagName.name, std::string("Elsewhere"));
  EXPECT_EQ(fieldText("highlight-tag-name"), "Elsewhere");
  shell.settings.set(keys::highlightTagEnabled, false);
  EXPECT_FALSE(isOn("highlight-tag") || visible("highlight-tag-name"));
}

TEST_F(SettingsWindowTest, ItsWordsAreThoseOfTheAccount) {
  shell.settings.set(keys::highlightTagEnabled, true);
  client.delay = 1s;
  answerMode(false);
  client.answerNext(support::FakeJMAPClient::reply({R"({"list":[{"inLabelsMode":false}]})"}));
  open();
  EXPECT_TRUE(says("Automatically label highlighted threads in Ondrel") && says("Label name:"));
  shell.loop.advance(2s);
  const std::string folder = "Automatically add highlighted email to Folder";
  EXPECT_TRUE(says(folder) && says("Folder name:"));
  EXPECT_TRUE(hasAccessibleLabel(controlOf("highlight-tag"), folder));
  EXPECT_TRUE(hasAccessibleLabel(controlOf("highlight-tag-name"), "Folder name"));
}

TEST_F(SettingsWindowTest, TheServerIsHiddenUntilItIsOfUse) {
  open();
  EXPECT_TRUE(says("Claude Code not found on this machine."));
  for (const auto* name : {"mcp-server", "mcp-port", "mcp-setup-command", "mcp-problem"})
    EXPECT_FALSE(visible(name)) << name;
  click(row("mcp-show-anyway"));
  EXPECT_TRUE(visible("mcp-server"));
  EXPECT_FALSE(visible("mcp-not-found") || visible("mcp-port") || visible("mcp-setup-command"));
  clickRow("mcp-server");
  EXPECT_TRUE(shell.settings.get(keys::mcpServerEnabled));
  EXPECT_TRUE(visible("mcp-port") && visible("mcp-setup-command"));
  EXPECT_EQ(fieldText("mcp-port"), "7777");
  shell.settle();
  server.problem.set("Port <7777> is in use & busy");
  EXPECT_TRUE(says("Port <7777> is in use & busy"));

  EXPECT_FALSE(visible("mcp-registered"));
  server.isRegistered.set(true);
  EXPECT_TRUE(visible("mcp-registered") && !visible("mcp-setup-command"));
  server.isRegistered.set(false);
  EXPECT_TRUE(says(mcp::setupCommand(7777)));
  auto* copy = row("copy-setup-command");
  click(copy);
  EXPECT_EQ(shell.clipboard.text, mcp::setupCommand(7777));
  EXPECT_TRUE(says("Copied") && hasAccessibleLabel(copy, "Copied"));
  shell.loop.advance(2s);
  EXPECT_FALSE(says("Copied"));
  EXPECT_TRUE(hasAccessibleLabel(copy, "Copy setup command"));
}

TEST_F(SettingsWindowTest, APortIsTakenWhenItIsConfirmedAndRefusedInItsRow) {
  shell.settings.set(keys::mcpServerEnabled, true);
  open();
  server.claudeCodeDetected.set(true); // found out when they are opened
  type("mcp-port", "70000");
  EXPECT_EQ(subtitle("mcp-port"), "") << "not yet";
  pressEnter("mcp-port");
  EXPECT_EQ(subtitle("mcp-port"), "Invalid MCP server port: 70000. Choose a port between 1 and 65535.");
  EXPECT_EQ(mcp.port(), 7777);
  server.problem.set("something else");
  EXPECT_EQ(fieldText("mcp-port"), "70000") << "to be mended";
  type("mcp-port", "<b>");
  EXPECT_EQ(subtitle("mcp-port"), "");

  type("mcp-port", " 8000 ");
  EXPECT_EQ(mcp.port(), 7777);
  pressEnter("mcp-port");
  EXPECT_EQ(mcp.port(), 8000);
  EXPECT_EQ(fieldText("mcp-port"), "8000");
  EXPECT_TRUE(says(mcp::setupCommand(8000)));
  type("mcp-port", "");
  pressEnter("mcp-port");
  EXPECT_EQ(fieldText("mcp-port"), "8000") << "nothing was asked for";

  type("mcp-port", "9");
  shell.defaults.set(keys::mcpServerPort.name, std::int64_t{8001});
  EXPECT_EQ(fieldText("mcp-port"), "8001") << "whoever sets it";
  type("mcp-port", "8002");
  gtk_window_close(window->window());
  EXPECT_TRUE(runUntil([&] { return window->window() == nullptr; }));
  EXPECT_EQ(mcp.port(), 8002) << "closing confirms";
}

TEST_F(SettingsWindowTest, EachChoiceOfTheVersionIsToldOnce) {
  const settings::EnvironmentWatch environment(shell.settings);
  std::vector<FastmailEnvironment> told;
  const auto watch = shell.settings.fastmailEnvironmentDidChange.subscribe(
      [&] { told.push_back(shell.settings.currentEnvironment()); });
  open();
  auto* version = ADW_COMBO_ROW(row("environment"));
  EXPECT_EQ(adw_combo_row_get_selected(version), 0U);
  adw_combo_row_set_selected(version, 1);
  EXPECT_EQ(told, std::vector{FastmailEnvironment::beta});
  adw_combo_row_set_selected(version, 1);
  shell.settings.setEnvironment(FastmailEnvironment::production);
  EXPECT_EQ(adw_combo_row_get_selected(version), 0U);
  EXPECT_EQ(told.size(), 2U);
}

TEST_F(SettingsWindowTest, BecomesTheDefaultMailApplicationOrTellsWhyNot) {
  open();
  const auto title = [this] {
    return std::string(adw_preferences_row_get_title(ADW_PREFERENCES_ROW(row("default-mail"))));
  };
  EXPECT_EQ(title(), "Mail is not your default email app");
  helper.answer = std::unexpected("");
  g_signal_emit_by_name(row("set-default-mail"), "clicked");
  EXPECT_FALSE(visible("set-default-mail")) << "it is under way";
  shell.loop.advance(1s);
  EXPECT_EQ(subtitle("default-mail"), "Unknown error");
  helper.answer = {};
  helper.didSet = [this] { shell.uriLauncher.mailApplication = "org.example.Mail"; };
  g_signal_emit_by_name(row("set-default-mail"), "clicked");
  EXPECT_EQ(subtitle("default-mail"), "");
  shell.loop.advance(1s);
  EXPECT_EQ(title(), "Mail is your default email app");
  EXPECT_FALSE(visible("set-default-mail"));
  EXPECT_EQ(helper.asked, (std::vector<std::string>(2, "org.example.Mail")));
  shell.uriLauncher.mailApplication = "org.example.Other"; // in the desktop's own settings
  g_signal_emit_by_name(glib::adopt(g_app_info_monitor_get()).get(), "changed");
  EXPECT_EQ(title(), "Mail is not your default email app");
}

TEST_F(SettingsWindowTest, OpensAtThePageThatWasOpenLast) {
  const auto page = [this] {
    return std::string(
        adw_preferences_window_get_visible_page_name(ADW_PREFERENCES_WINDOW(window->window())));
  };
  shell.settings.setSelectedSettingsTab(settings::SettingsTab::advanced);
  open();
  EXPECT_EQ(page(), "advanced");
  adw_preferences_window_set_visible_page_name(ADW_PREFERENCES_WINDOW(window->window()), "shortcuts");
  EXPECT_EQ(shell.settings.selectedSettingsTab(), settings::SettingsTab::shortcuts);
  shell.settings.setSelectedSettingsTab(settings::SettingsTab::general); // as a question leads there
  EXPECT_EQ(page(), "general");
  gtk_window_close(window->window());
  EXPECT_TRUE(runUntil([&] { return window->window() == nullptr; }));
  EXPECT_EQ(shell.settings.selectedSettingsTab(), settings::SettingsTab::general);
}

TEST_F(SettingsWindowTest, LeadsThroughAnUpdate) {
  open();
  shell.loop.advance(2s);
  EXPECT_TRUE(updater.calls.empty()) << "nobody has turned to that page";
  shell.settings.setSelectedSettingsTab(settings::SettingsTab::update);
  ASSERT_TRUE(runUntil([this] { return gtk_widget_get_mapped(row("update-status")) != FALSE; }));
  shell.loop.advance(2s);
  EXPECT_TRUE(says("This is Mail 1.0"));
  EXPECT_TRUE(says("Update settings — last check: Never"));
  gtk_widget_grab_focus(row("update-check"));
  click(row("update-check"));
  shell.loop.advance(1s);
  EXPECT_TRUE(gtk_widget_is_focus(row("update-cancel"))) << "the keyboard isn't lost";
  shell.loop.advance(2s);
  EXPECT_TRUE(says("Mail 1.2 is available") && says("• Faster"));
  for (const auto* step : {"update-download", "update-install", "update-restart"}) {
    EXPECT_TRUE(visible(step));
    click(row(step));
    shell.loop.advance(2s);
  }
  EXPECT_EQ(opened, std::vector<std::string>{"restart"});

  auto* interval = ADW_COMBO_ROW(row("_updateCheckInterval"));
  shell.defaults.set(keys::updateCheckInterval.name, 500000.0); // whoever does
  EXPECT_EQ(adw_combo_row_get_selected(interval), 2U);
  EXPECT_EQ(shell.settings.get(keys::updateCheckInterval), 500000.0) << "only shown";
  adw_combo_row_set_selected(interval, 3);
  EXPECT_EQ(shell.settings.get(keys::updateCheckInterval), 2592000.0);
}

TEST_F(SettingsWindowTest, SwitchesShowWhatIsTrue) {
  const support::LogCapture log;
  open();
  EXPECT_FALSE(isOn("launch-at-login"));
  loginItem.answer = std::unexpected("no");
  gtk_switch_set_active(GTK_SWITCH(controlOf("launch-at-login")), TRUE);
  shell.loop.advance(1s);
  EXPECT_FALSE(isOn("launch-at-login"));
  EXPECT_TRUE(log.count("error system: Could not toggle login item: no") == 1);
  loginItem.enabled = true;
  loginItem.changed.emit();
  EXPECT_TRUE(isOn("launch-at-login"));
  shell.settings.set(keys::hideOnLoseFocus, true);
  EXPECT_TRUE(isOn("_hideOnLoseFocus")) << "whoever changes it";
  gtk_switch_set_active(GTK_SWITCH(controlOf("_hideOnLoseFocus")), FALSE);
  EXPECT_FALSE(shell.settings.get(keys::hideOnLoseFocus));
}

TEST_F(SettingsWindowTest, SpeaksTheUsersLanguageInANarrowWindowAndLargeLetters) {
  const PseudoLocale pseudo;
  open();
  gtk_window_set_default_size(window->window(), 360, 600);
  auto* pages = ADW_PREFERENCES_WINDOW(window->window());
  for (const auto page : settings::settingsTabRawValues) {
    adw_preferences_window_set_visible_page_name(pages, page.data());
    int least = 0; // but for the toolkit's switch of the pages
    gtk_widget_measure(GTK_WIDGET(adw_preferences_window_get_visible_page(pages)), GTK_ORIENTATION_HORIZONTAL,
                       -1, &least, nullptr, nullptr, nullptr);
    EXPECT_LE(least, 360) << page;
    expectTranslated(root());
  }
}

TEST_F(SettingsWindowTest, ShowsTheShortcutAndWhatIsWrongWithIt) {
  const std::string name = shortcuts::toggleVisibility;
  const auto label = [this] { return std::string(gtk_button_get_label(GTK_BUTTON(find(root(), "record")))); };
  open();
  EXPECT_EQ(label(), "Record Shortcut");
  EXPECT_FALSE(visible("clear"));
  shortcutKeys.set(name, platform::KeyCombination{.control = true, .key = "m"});
  shell.loop.advance(1s);
  EXPECT_EQ(label(), "Ctrl+M");
  globalShortcuts.taken = "t";
  shortcutKeys.set(name, platform::KeyCombination{.alt = true, .key = "t"});
  shell.loop.advance(1s);
  EXPECT_EQ(label(), "Ctrl+M");
  EXPECT_EQ(subtitle(name.c_str()), "These are taken.");
  g_signal_emit_by_name(row("record"), "clicked");
  EXPECT_EQ(label(), "Recording…");
  g_signal_emit_by_name(row("clear"), "clicked");
  EXPECT_EQ(shell.defaults.string(name), std::nullopt);
  window.reset(); // while it records
}

} // namespace
} // namespace ondrel::ui
