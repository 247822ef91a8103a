#include "ShellTest.h"

#include "highlights/file/HighlightStore.h"
#include "platform/ProgramInfo.h"
#include "start/CommandLine.h"
#include "support/PseudoLocale.h"
#include "ui/commands/ActionName.h"
#include "ui/commands/BrowserCommands.h"
#include "ui/commands/CommandActions.h"
#include "ui/commands/FocusedTab.h"
#include "ui/commands/HighlightSelection.h"
#include "ui/commands/PrimaryMenu.h"
#include "ui/commands/ShortcutsWindow.h"
#include "ui/widgets/Style.h"

#include <fstream>
#include <set>

namespace ondrel::ui {
namespace {

class CommandsTest : public ShellTest {
 protected:
  void SetUp() override {
    ShellTest::SetUp();
    start();
    shell.manager->openMainWindow();
    ASSERT_TRUE(application);
    focusedTab.emplace(shell.application, *shell.manager);
    selection.emplace(*focusedTab);
    commands.emplace(
        shell.application, *shell.manager, shell.settings, highlights, *focusedTab,
        platform::ProgramInfo{"org.velmora.Ondrel", "Ondrel", "1.0", "1"},
        BrowserCommands::Actions{.checkForUpdates = [this] { done.push_back("updates"); },
                                 .navigate = [this](const std::string& url) { navigated.push_back(url); },
                                 .copyAppleMailLink = [this] { done.push_back("copy"); },
                                 .highlightSelection = [this] { selection->perform(); },
                                 .showHighlights = [this] { done.push_back("show"); },
                                 .newMessage = {},
                                 .exportHighlights = [this] { done.push_back("export"); },
                                 .importHighlights = [this] { done.push_back("import"); },
                                 .removeAllHighlights = [this] { done.push_back("remove all"); },
                                 .showFiles = [] {},
                                 .showServerLocation = [this] { done.push_back("location"); },
                                 .toggleFullScreen = [this] { done.push_back("full screen"); },
                                 .focusPane = [](int) {},
                                 .showSettings = [] {},
                                 .showShortcuts = [] {},
                                 .showHelp = [] {},
                                 .contact = [] {},
                                 .showAbout = [] {},
                                 .toggleVisibility = {},
                                 .quit = [this] { done.push_back("quit"); }});
    groups = commands->table();
    actions.emplace(application.get(), groups);
  }
  void TearDown() override {
    actions.reset();
    groups.clear();
    commands.reset();
    selection.reset();
    focusedTab.reset();
    ShellTest::TearDown();
  }

  bool enabled(const char* name) { return g_action_group_get_action_enabled(group(), name); }
  void activate(const char* name) {
    g_action_group_activate_action(group(), name, nullptr);
    shell.settle();
  }
  GActionGroup* group() { return G_ACTION_GROUP(application.get()); }

  static void SetUpTestSuite() {
    application = glib::adopt(
        GTK_APPLICATION(adw_application_new("org.velmora.Ondrel.Test", G_APPLICATION_NON_UNIQUE)));
    ASSERT_TRUE(g_application_register(G_APPLICATION(application.get()), nullptr, nullptr));
  }
  static void TearDownTestSuite() { application = nullptr; }

  static inline glib::Ref<GtkApplication> application;
  std::vector<std::string> navigated;
  std::vector<std::string> done;
  highlights::HighlightStore highlights{shell.files, shell.files};
  std::optional<FocusedTab> focusedTab;
  std::optional<HighlightSelection> selection;
  std::optional<BrowserCommands> commands;
  std::vector<CommandGroup> groups;
  std::optional<CommandActions> actions;
};

TEST_F(CommandsTest, EachRowIsAnActionWithoutAParameterAndWithKeysOfItsOwn) {
  std::set<std::pair<guint, GdkModifierType>> keys;
  std::set<std::string> names;
  for (const auto& each : groups)
    for (const auto& command : each.commands) {
      const auto name = actionName(command.title);
      EXPECT_TRUE(names.insert(name).second) << name;
      ASSERT_TRUE(g_action_group_has_action(group(), name.c_str())) << name;
      EXPECT_EQ(g_action_group_get_action_parameter_type(group(), name.c_str()), nullptr)
          << name << " can be called by any process of the session";
      for (const auto& accelerator : command.accelerators) {
        guint key = 0;
        GdkModifierType modifiers{};
        EXPECT_TRUE(gtk_accelerator_parse(accelerator.c_str(), &key, &modifiers)) << accelerator;
        EXPECT_TRUE(keys.emplace(key, modifiers).second) << accelerator << " is taken";
      }
      const glib::Owned<char*> known(
          gtk_application_get_accels_for_action(application.get(), ("app." + name).c_str()));
      EXPECT_EQ(g_strv_length(known.get()), command.pageFirst ? 0 : command.accelerators.size()) << name;
    }
  EXPECT_TRUE(names.contains("about-ondrel"));
  EXPECT_TRUE(names.contains("toggle-visibility")) << "the command line calls it by this name";
  std::ifstream desktopFile(DESKTOP_FILE);
  for (std::string line; std::getline(desktopFile, line);)
    if (line.starts_with("[Desktop Action ")) {
      const auto name = line.substr(16, line.size() - 17);
      EXPECT_TRUE(names.contains(name) && enabled(name.c_str())) << name;
      EXPECT_EQ(start::CommandLine::parse({"--" + name}).value().command, name);
    }
  actions.reset();
  EXPECT_FALSE(g_action_group_has_action(group(), "new-tab")) << "nothing stays behind";
}

TEST_F(CommandsTest, ActOnTheTabWithTheKeyboardAndFollowIt) {
  model(0)->canGoBack.set(true);
  shell.application.setKey(window(0));
  EXPECT_TRUE(enabled("back"));
  EXPECT_FALSE(enabled("forward") || enabled("actual-size"));
  activate("zoom-in");
  EXPECT_TRUE(enabled("actual-size"));
  EXPECT_DOUBLE_EQ(shell.webView(model(0))->zoom, 1.05);

  shell.application.setKey(window(1));
  EXPECT_FALSE(enabled("back") || enabled("actual-size"));
  activate("reload");
  EXPECT_EQ(shell.webView(model(0))->reloads, 0);
  EXPECT_EQ(shell.webView(model(1))->reloads, 1);
  model(1)->canGoForward.set(true);
  activate("forward");
  EXPECT_EQ(shell.webView(model(1))->forwards, 1);

  activate("close-tab");
  EXPECT_EQ(shell.application.all.size(), 1U);
  shell.application.windowFocused.emit(nullptr);
  EXPECT_FALSE(enabled("reload")) << "no window has the keyboard";
  activate("new-window");
  EXPECT_EQ(shell.application.all.size(), 2U);
}

TEST_F(CommandsTest, MoveTheTabAmongItsNeighbours) {
  window(0)->addTabbedWindow(window(1));
  shell.application.setKey(window(1));
  for (const auto& [command, place] : {std::pair("move-tab-right", 1U),
                                       {"move-tab-left", 0U},
                                       {"move-tab-left", 0U},
                                       {"move-tab-right", 1U}}) {
    activate(command);
    EXPECT_EQ(window(1)->tabGroup()->windows().at(place), window(1)) << command;
  }
  gtk_widget_set_default_direction(GTK_TEXT_DIR_RTL); // the first one is to the right
  activate("move-tab-right");
  gtk_widget_set_default_direction(GTK_TEXT_DIR_LTR);
  EXPECT_EQ(window(1)->tabGroup()->windows().at(0), window(1));
}

TEST_F(CommandsTest, FindProposesWhatIsMarkedButNeverOverWhatTheUserWrites) {
  const auto tab = model(0);
  shell.application.setKey(window(0));
  tab->show("https://app.example.com/mail/");
  const auto& text = tab->search.state;
  auto& page = *shell.webView(tab);
  const auto find = [&](const char* marked, const char* typed) {
    page.answer = [marked](const std::string&) { return boost::json::value(marked); };
    g_action_group_activate_action(group(), "find-in-page", nullptr);
    shell.loop.runUntilIdle();
    if (typed)
      tab->search.setText(typed);
    shell.settle();
    return text->text;
  };
  page.hangs = true; // the page's answer to come
  EXPECT_EQ(find("late", "typed"), "typed");
  page.hangs = false;
  EXPECT_EQ(find(" marked ", nullptr), "marked");
  for (const char* unfit : {"", "two\nlines"})
    EXPECT_EQ(find(unfit, nullptr), "marked");
  page.loading = true;
  page.delegate->loadingDidChange();
  EXPECT_TRUE(enabled("stop"));
  activate("stop");
  EXPECT_FALSE(enabled("stop"));
  page.delegate->webProcessDidTerminate(true);
  EXPECT_FALSE(enabled("find-in-page") || enabled("find-next"));
}

TEST_F(CommandsTest, HighlightsTheSelectionOfTheTabWithTheKeyboard) {
  EXPECT_FALSE(enabled("highlight-selection"));
  const auto tab = model(0);
  std::vector<std::string> notices;
  const auto watching = tab->noticed.subscribe([&](const auto& notice) { notices.push_back(notice.text); });
  shell.application.setKey(window(0));
  tab->show("https://app.example.com/mail/Inbox/T1.M1");
  shell.settle();
  auto& page = *shell.webView(tab);
  page.evaluations.clear();
  ASSERT_TRUE(enabled("highlight-selection"));
  page.answer = [](const std::string&) { return boost::json::value(true); };
  activate("highlight-selection");
  EXPECT_EQ(page.evaluations, std::vector<std::string>{"window.__ondrelHighlightSelection()"});
  EXPECT_FALSE(page.evaluationFrames.back());
  EXPECT_TRUE(notices.empty());

  const std::string wanted = "Select text in a message first.";
  page.answer = [](const std::string&) { return boost::json::value(false); };
  activate("highlight-selection");
  EXPECT_EQ(notices, std::vector{wanted});
  page.answer = [](const std::string&) {
    return std::unexpected(
        platform::ScriptError{platform::ScriptError::Kind::exception, "none of that name"});
  };
  activate("highlight-selection");
  EXPECT_EQ(notices.size(), 2U);

  // The address is that of a load as soon as it begins, while another page is still shown.
  const auto count = page.evaluations.size();
  tab->foreignHost.set("news.example");
  activate("highlight-selection");
  tab->foreignHost.set("");
  page.currentUrl = "https://news.example/mail/";
  activate("highlight-selection");
  EXPECT_EQ(page.evaluations.size(), count);
  EXPECT_EQ(notices.size(), 4U);

  // A page that hangs says so itself.
  page.currentUrl = "https://app.example.com/mail/Inbox/T1.M1";
  page.hangs = true;
  activate("highlight-selection");
  shell.loop.advance(std::chrono::minutes(1));
  EXPECT_EQ(notices.size(), 4U);
}

TEST_F(CommandsTest, ToolsAreThereWhenTheyHaveSomethingToWorkOn) {
  EXPECT_FALSE(enabled("open-copied-fastmail-link") || enabled("new-masked-email-address"));
  shell.clipboard.text = "https://app.example.com/mail/Inbox/T1?u=1";
  shell.manager->copiedLink().refresh();
  shell.settle();
  ASSERT_TRUE(enabled("open-copied-fastmail-link"));
  activate("open-copied-fastmail-link");
  EXPECT_EQ(navigated, std::vector{*shell.clipboard.text});

  model(1)->urlString.set("https://app.example.com/mail/Inbox/");
  shell.settle();
  ASSERT_TRUE(enabled("new-masked-email-address"));
  activate("new-masked-email-address");
  EXPECT_EQ(shell.webView(model(1))->evaluations.back(),
            "FastMail.router.appController.goCreateMaskedEmail();");
}

TEST_F(CommandsTest, HighlightsCanBeShownAndExportedWhenThereAreSome) {
  EXPECT_FALSE(enabled("show-highlights") || enabled("export-highlights") ||
               enabled("remove-all-highlights"));
  EXPECT_TRUE(enabled("import-highlights"));
  highlights.add({"h1", "T1", "text", "", ""}, "1@x");
  EXPECT_TRUE(enabled("show-highlights") && enabled("export-highlights"));
  for (const auto* name :
       {"show-highlights", "export-highlights", "import-highlights", "remove-all-highlights"})
    activate(name);
  EXPECT_EQ(done, (std::vector<std::string>{"show", "export", "import", "remove all"}));
  highlights.removeAll();
  EXPECT_FALSE(enabled("show-highlights") || enabled("export-highlights"));
}

TEST_F(CommandsTest, SwitchesFollowTheTabInFrontAndTheSetting) {
  const auto isOn = [&](const char* action = "show-toolbar") {
    const glib::Owned<GVariant> state(g_action_group_get_action_state(group(), action));
    return g_variant_get_boolean(state.get()) != FALSE;
  };
  activate("hide-when-losing-focus");
  EXPECT_TRUE(isOn("hide-when-losing-focus") && shell.settings.get(settings::keys::hideOnLoseFocus));
  shell.settings.set(settings::keys::hideOnLoseFocus, false);
  EXPECT_FALSE(isOn("hide-when-losing-focus"));
  shell.application.setKey(window(0));
  EXPECT_TRUE(isOn());
  model(1)->toolbarVisible.set(false);
  EXPECT_TRUE(isOn());
  shell.application.setKey(window(1));
  EXPECT_FALSE(isOn());
  activate("show-toolbar");
  EXPECT_TRUE(isOn() && *model(1)->toolbarVisible);
  activate("show-toolbar");
  EXPECT_FALSE(isOn() || *model(1)->toolbarVisible);
}

TEST_F(CommandsTest, TheMenuExplainsWhatCantBeUsed) {
  const PrimaryMenu menu(groups);
  auto* button = gtk_menu_button_new();
  auto* popover = gtk_popover_menu_new_from_model(menu.model());
  gtk_menu_button_set_popover(GTK_MENU_BUTTON(button), popover);
  showWidget(button);
  const auto help = [&] {
    menu.explain(popover);
    std::vector<std::string> found;
    std::function<void(GtkWidget*)> collect = [&](GtkWidget* widget) {
      if (const char* tooltip = gtk_widget_get_tooltip_text(widget))
        found.emplace_back(tooltip);
      for (auto* child = gtk_widget_get_first_child(widget); child;
           child = gtk_widget_get_next_sibling(child))
        collect(child);
    };
    collect(popover);
    std::ranges::sort(found);
    return found;
  };
  const std::string aMail = "Only available when a mail window is in front";
  const std::string inFront = "Only available when an mail window is in front";
  const std::string notYet = "You have not highlighted content yet.";
  const std::string noEmail = "Only available when an email is selected";
  EXPECT_EQ(help(), (std::vector{aMail, noEmail, inFront, notYet, notYet, notYet}));
  highlights.add({"h1", "T1", "text", "", ""}, "1@x");
  EXPECT_EQ(help(), (std::vector{aMail, noEmail, inFront}));
  const std::string copy = "copy-apple-mail-formatted-link-to-clipboard";
  EXPECT_FALSE(enabled(copy.c_str()));
  shell.webView(model(1))->answer = [](const std::string&) { return boost::json::value(true); };
  model(1)->urlString.set("https://app.example.com/mail/Inbox/");
  shell.webView(model(1))->loading = false;
  model(1)->urlString.set("https://app.example.com/mail/Inbox/T1");
  shell.settle();
  EXPECT_TRUE(help().empty());
  EXPECT_TRUE(enabled(copy.c_str()));
}

TEST_F(CommandsTest, SpeakTheUsersLanguageButKeepTheirNames) {
  const PseudoLocale pseudo;
  groups = commands->table();
  const PrimaryMenu menu(groups);
  std::function<void(GMenuModel*)> look = [&look](GMenuModel* model) {
    for (int i = 0; i < g_menu_model_get_n_items(model); ++i) {
      const glib::Owned<GVariant> label(
          g_menu_model_get_item_attribute_value(model, i, G_MENU_ATTRIBUTE_LABEL, G_VARIANT_TYPE_STRING));
      if (label)
        EXPECT_TRUE(support::isTranslated(g_variant_get_string(label.get(), nullptr)));
      for (const auto* link : {G_MENU_LINK_SECTION, G_MENU_LINK_SUBMENU})
        if (const auto inner = glib::adopt(g_menu_model_get_item_link(model, i, link)))
          look(inner.get());
    }
  };
  look(menu.model());
  installStyle();
  auto* window = GTK_WIDGET(presentShortcuts(groups, nullptr));
  topLevels.push_back(glib::share(GTK_WINDOW(window)));
  gtk_window_set_default_size(GTK_WINDOW(window), 360, 600);
  // The toolkit's own.
  expectTranslated(window, {"Ctrl", "Shift", "Alt", "Tab", "Escape", "Page_Up", "Page_Down"});
  expectReadable(window);
  const auto shown = visibleTexts(window).size();
  const auto search = [&](const char* text) {
    gtk_editable_set_text(GTK_EDITABLE(find(window, "shortcuts-search")), text);
    return runUntil([&] { return visibleTexts(window).size() < shown; });
  };
  EXPECT_TRUE(search("priint"));
  EXPECT_EQ(std::ranges::count(visibleTexts(window), "⟦Priint…⟧"), 1);
  EXPECT_TRUE(search("nowhere") && std::ranges::count(visibleTexts(window), "⟦Noo Maatchees⟧") == 1);
}

} // namespace
} // namespace ondrel::ui
