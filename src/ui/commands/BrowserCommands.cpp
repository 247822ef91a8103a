#include "ui/commands/BrowserCommands.h"

#include "app/TabMoves.h"
#include "app/WindowManager.h"
#include "base/Text.h"
#include "base/Translation.h"
#include "highlights/file/HighlightStore.h"
#include "platform/Application.h"
#include "platform/UserDefaults.h"
#include "settings/AppSettings.h"
#include "settings/ServicePage.h"
#include "ui/commands/FocusedTab.h"
#include "ui/widgets/Widgets.h"
#include "web/WindowViewModel.h"

#include <functional>

namespace ondrel::ui {

using web::WindowViewModel;

namespace {

// The page may be gone or another one by now; then nothing happens.
async::Task<void> evaluateInTab(std::shared_ptr<WindowViewModel> tab, std::string source) {
  [[maybe_unused]] const auto ignored = co_await tab->evaluate(std::move(source));
}

// What is marked in the page is proposed, if that comes before the user has written something.
async::Task<void> askWithSelection(std::weak_ptr<WindowViewModel> weakTab) {
  constexpr std::size_t longestProposal = 100; // bytes
  auto tab = weakTab.lock();
  if (!tab)
    co_return;
  tab->search.ask();
  const auto before = tab->search.state->text;
  auto answering = tab->evaluate("String(getSelection())");
  tab.reset();
  const auto answer = co_await std::move(answering);
  tab = weakTab.lock();
  if (!tab || !answer || !answer->is_string() || !tab->search.state->isOpen ||
      tab->search.state->text != before)
    co_return;
  const std::string text(base::trimmed(std::string_view(answer->get_string())));
  if (!text.empty() && text.size() <= longestProposal && !text.contains('\n'))
    tab->search.setText(text);
}

Condition whenFocusedTab(FocusedTab& focusedTab, std::function<bool(const WindowViewModel&)> holds) {
  return {[&focusedTab, holds = std::move(holds)] {
            const auto tab = focusedTab.viewModel();
            return tab && holds(*tab);
          },
          [&focusedTab](auto changed) { return focusedTab.changed.subscribe(std::move(changed)); }};
}

template <class Work>
std::function<void()> inKeyTab(FocusedTab& focusedTab, Work work) {
  return [&focusedTab, work] {
    if (const auto tab = focusedTab.viewModel())
      std::invoke(work, *tab);
  };
}

void toggleToolbar(WindowViewModel& tab) {
  tab.toolbarVisible.set(!*tab.toolbarVisible);
}

} // namespace

BrowserCommands::BrowserCommands(platform::Application& application, app::WindowManager& windows,
                                 settings::AppSettings& settings, highlights::HighlightStore& highlights,
                                 FocusedTab& focusedTab, platform::ProgramInfo programInfo, Actions actions)
    : application_(application), windows_(windows), settings_(settings), highlights_(highlights),
      focusedTab_(focusedTab), programInfo_(std::move(programInfo)), actions_(std::move(actions)) {
}

std::vector<CommandGroup> BrowserCommands::table() {
  return {updates(), finding(), printing(), highlights(), windowsAndTabs(), navigation(), view(),
          toolbar(), panes(),   tools(),    tabs(),       preferences(),    help(),       program()};
}

CommandGroup BrowserCommands::updates() {
  return {base::trMark("General"),
          {{.title = base::trMark("Check for Updates…"), .perform = actions_.checkForUpdates}}};
}

CommandGroup BrowserCommands::windowsAndTabs() {
  return {base::trMark("Windows and Tabs"),
          {{.title = base::trMark("New Window"),
            .accelerators = {"<Control>n"},
            .perform = [this] { windows_.openMainWindow(); }},
           {.title = base::trMark("New Tab"),
            .accelerators = {"<Control>t"},
            .perform = [this] { windows_.newTab(); }},
           {.title = base::trMark("Reopen Closed Tab"),
            .accelerators = {"<Control><Shift>t"},
            .perform = [this] { windows_.reopenClosedTab(); },
            .enabledWhen = whenTrue(windows_.canReopenClosedTab())},
           {.title = base::trMark("Close Tab"),
            .accelerators = {"<Control>w"},
            .perform = inKeyWindow([](platform::Window& window) { window.requestClose(); })}}};
}

// The windows answer the keys with Tab themselves, before all others.
CommandGroup BrowserCommands::tabs() {
  const auto whenTab = whenFocusedTab(focusedTab_, [](const auto&) { return true; });
  return {base::trMark("Tabs"),
          {{.title = base::trMark("Next Tab"),
            .accelerators = {"<Control>Tab", "<Control>Page_Down"},
            .perform = inKeyWindow([](platform::Window& window) { window.selectNextTab(); }),
            .enabledWhen = whenTab,
            .place = MenuPlace::none},
           {.title = base::trMark("Previous Tab"),
            .accelerators = {"<Control><Shift>Tab", "<Control>Page_Up"},
            .perform = inKeyWindow([](platform::Window& window) { window.selectPreviousTab(); }),
            .enabledWhen = whenTab,
            .place = MenuPlace::none},
           {.title = base::trMark("Move Tab Left"),
            .accelerators = {"<Control><Shift>Page_Up"},
            .perform = inKeyWindow(
                [](platform::Window& window) { app::moveTab(window, readsRightToLeft() ? 1 : -1); }),
            .enabledWhen = whenTab,
            .place = MenuPlace::none},
           {.title = base::trMark("Move Tab Right"),
            .accelerators = {"<Control><Shift>Page_Down"},
            .perform = inKeyWindow(
                [](platform::Window& window) { app::moveTab(window, readsRightToLeft() ? -1 : 1); }),
            .enabledWhen = whenTab,
            .place = MenuPlace::none}}};
}

CommandGroup BrowserCommands::panes() {
  const auto whenTab = whenFocusedTab(focusedTab_, [](const auto&) { return true; });
  return {base::trMark("Windows and Tabs"),
          // TRANSLATORS: a part of the window that has the keyboard: the page, say, or the bar above it
          {{.title = base::trMark("Next Pane"),
            .accelerators = {"F6"},
            .perform = [this] { actions_.focusPane(1); },
            .enabledWhen = whenTab,
            .place = MenuPlace::none},
           {.title = base::trMark("Previous Pane"),
            .accelerators = {"<Shift>F6"},
            .perform = [this] { actions_.focusPane(-1); },
            .enabledWhen = whenTab,
            .place = MenuPlace::none}}};
}

CommandGroup BrowserCommands::navigation() {
  return {base::trMark("Navigation"),
          // TRANSLATORS: goes to the page that was shown before
          {{.title = base::trMark("Back"),
            .accelerators = {readsRightToLeft() ? "<Alt>Right" : "<Alt>Left", "Back"},
            .perform = inKeyTab(focusedTab_, &WindowViewModel::goBack),
            .enabledWhen = whenFocusedTab(focusedTab_, [](const auto& tab) { return *tab.canGoBack; }),
            .place = MenuPlace::none},
           {.title = base::trMark("Forward"),
            .accelerators = {readsRightToLeft() ? "<Alt>Left" : "<Alt>Right", "Forward"},
            .perform = inKeyTab(focusedTab_, &WindowViewModel::goForward),
            .enabledWhen = whenFocusedTab(focusedTab_, [](const auto& tab) { return *tab.canGoForward; }),
            .place = MenuPlace::none},
           {.title = base::trMark("Reload"),
            .accelerators = {"<Control>r", "F5"},
            .perform = inKeyTab(focusedTab_, &WindowViewModel::reload),
            .enabledWhen = whenFocusedTab(focusedTab_, [](const auto&) { return true; }),
            .place = MenuPlace::none},
           // TRANSLATORS: a verb: to end the loading of the page
           {.title = base::trMark("Stop"),
            .accelerators = {"Escape"},
            .perform = inKeyTab(focusedTab_, &WindowViewModel::stop),
            .enabledWhen = whenFocusedTab(focusedTab_, [](const auto& tab) { return *tab.isLoading; }),
            .place = MenuPlace::none,
            .pageFirst = true}}};
}

CommandGroup BrowserCommands::view() {
  return {base::trMark("Zoom"),
          {{.title = base::trMark("Zoom Out"),
            .accelerators = {"<Control>minus", "<Control>KP_Subtract"},
            .perform = inKeyTab(focusedTab_, &WindowViewModel::zoomOut),
            .enabledWhen = whenFocusedTab(focusedTab_, [](const auto& tab) { return *tab.canZoomOut; }),
            .place = MenuPlace::button},
           {.title = base::trMark("Actual Size"),
            .accelerators = {"<Control>0", "<Control>KP_0"},
            .perform = inKeyTab(focusedTab_, &WindowViewModel::zoomToActualSize),
            .enabledWhen = whenFocusedTab(focusedTab_, [](const auto& tab) { return !*tab.isZoomDefault; }),
            .place = MenuPlace::button},
           {.title = base::trMark("Zoom In"),
            .accelerators = {"<Control>plus", "<Control>equal", "<Control>KP_Add"},
            .perform = inKeyTab(focusedTab_, &WindowViewModel::zoomIn),
            .enabledWhen = whenFocusedTab(focusedTab_, [](const auto& tab) { return *tab.canZoomIn; }),
            .place = MenuPlace::button}}};
}

CommandGroup BrowserCommands::finding() {
  const auto whenPage = whenFocusedTab(focusedTab_, [](const auto& tab) {
    return tab.pageProblem->kind != web::PageProblem::Kind::processTerminated;
  });
  return {base::trMark("Navigation"),
          {{.title = base::trMark("Find in Page…"),
            .accelerators = {"<Control>f"},
            .perform = [this] { findInPage(); },
            .enabledWhen = whenPage,
            .pageFirst = true},
           {.title = base::trMark("Find Next"),
            .accelerators = {"<Control>g", "F3"},
            .perform = inKeyTab(focusedTab_, [](auto& tab) { tab.search.next(); }),
            .enabledWhen = whenPage,
            .place = MenuPlace::none,
            .pageFirst = true},
           {.title = base::trMark("Find Previous"),
            .accelerators = {"<Control><Shift>g", "<Shift>F3"},
            .perform = inKeyTab(focusedTab_, [](auto& tab) { tab.search.previous(); }),
            .enabledWhen = whenPage,
            .place = MenuPlace::none,
            .pageFirst = true}}};
}

CommandGroup BrowserCommands::printing() {
  // Other windows have their own meaning for these keys.
  const auto whenTab = whenFocusedTab(focusedTab_, [](const auto&) { return true; });
  return {base::trMark("Printing"),
          {{.title = base::trMark("Print…"),
            .accelerators = {"<Control>p"},
            .perform = [this] { windows_.printActive(); },
            .enabledWhen = whenTab},
           {.title = base::trMark("Export as PDF…"),
            .accelerators = {"<Control><Shift>p"},
            .perform = [this] { windows_.exportPDFActive(); },
            .enabledWhen = whenTab}}};
}

CommandGroup BrowserCommands::highlights() {
  const auto help = [this] { return helpWithoutHighlights(); };
  return {.title = base::trMark("Highlights"),
          .commands = {{.title = base::trMark("Highlight Selection"),
                        .accelerators = {"<Control><Shift>y"},
                        .perform = actions_.highlightSelection,
                        .enabledWhen = whenTrue(windows_.conversation().activeURLContainsMail),
                        .help =
                            [this] {
                              return *windows_.conversation().activeURLContainsMail
                                         ? ""
                                         : base::tr("Only available when a mail window is in front");
                            }},
                       {.title = base::trMark("Show Highlights"),
                        .accelerators = {"<Control><Shift>h"},
                        .perform = actions_.showHighlights,
                        .enabledWhen = whenHighlighted(),
                        .help = help},
                       {.title = base::trMark("Export Highlights…"),
                        .accelerators = {"<Control><Shift>e"},
                        .perform = actions_.exportHighlights,
                        .enabledWhen = whenHighlighted(),
                        .help = help},
                       {.title = base::trMark("Import Highlights…"),
                        .accelerators = {"<Control><Shift>i"},
                        .perform = actions_.importHighlights},
                       // Apart from the others: it can't be undone.
                       {.title = base::trMark("Remove All Highlights…"),
                        .perform = actions_.removeAllHighlights,
                        .enabledWhen = whenHighlighted(),
                        .help = help,
                        .startsSection = true}},
          .isSubmenu = true};
}

CommandGroup BrowserCommands::tools() {
  return {
      .title = base::trMark("Tools"),
      .commands = {{.title = base::trMark("Open Copied FastMail Link"),
                    .accelerators = {"<Control><Shift>f"},
                    .perform = [this] { openCopiedLink(); },
                    .enabledWhen = whenSet(windows_.copiedLink().url)},
                   {.title = base::trMark("Copy Apple Mail Formatted Link to Clipboard"),
                    .accelerators = {"<Control><Shift>c"},
                    .perform = actions_.copyAppleMailLink,
                    .enabledWhen = whenMessageIsOpen(),
                    .help =
                        [this] {
                          return *windows_.conversation().isConversationVisible
                                     ? ""
                                     : base::tr("Only available when an email is selected");
                        }},
                   {.title = base::trMark("New Masked Email Address"),
                    .accelerators = {"<Control><Shift>m"},
                    .perform = [this] { newMaskedEmailAddress(); },
                    .enabledWhen = whenTrue(windows_.conversation().activeURLContainsMail),
                    .help =
                        [this] {
                          return *windows_.conversation().activeURLContainsMail
                                     ? ""
                                     : base::tr("Only available when an mail window is in front");
                        }},
                   {.title = base::trMark("Show Attached Files"),
                    .accelerators = {"<Control><Shift>a"},
                    .perform = actions_.showFiles},
                   {.title = base::trMark("Show Server Location"), .perform = actions_.showServerLocation}},
      .isSubmenu = true};
}

CommandGroup BrowserCommands::toolbar() {
  return {base::trMark("Windows and Tabs"),
          {{.title = base::trMark("Show Toolbar"),
            .perform = inKeyTab(focusedTab_, toggleToolbar),
            .enabledWhen = whenFocusedTab(focusedTab_, [](const auto&) { return true; }),
            .checkedWhen = whenFocusedTab(focusedTab_, [](const auto& tab) { return *tab.toolbarVisible; })},
           {.title = base::trMark("Full Screen"),
            .accelerators = {"F11"},
            .perform = actions_.toggleFullScreen,
            .enabledWhen = whenFocusedTab(focusedTab_, [](const auto&) { return true; })},
           {.title = base::trMark("Hide When Losing Focus"),
            .accelerators = {"<Control>l"},
            .perform =
                [this] {
                  const auto& key = settings::keys::hideOnLoseFocus;
                  settings_.set(key, !settings_.get(key));
                },
            .checkedWhen = whenHidingOnLoseFocus()}}};
}

CommandGroup BrowserCommands::preferences() {
  // The keys by which desktops show shortcuts are those of the help, where there is help.
  const std::vector<std::string> keys =
      actions_.showHelp ? std::vector<std::string>{"<Control>F1"}
                        : std::vector<std::string>{"<Control>question", "F1", "<Control>F1"};
  return {base::trMark("General"),
          {{.title = base::trMark("Settings…"),
            .accelerators = {"<Control>comma"},
            .perform = actions_.showSettings},
           {.title = base::trMark("Keyboard Shortcuts"),
            .accelerators = keys,
            .perform = actions_.showShortcuts}}};
}

CommandGroup BrowserCommands::help() {
  CommandGroup group{base::trMark("General"), {}};
  if (actions_.showHelp)
    group.commands.push_back({.title = programInfo_.displayName + " Help",
                              .shown = base::trFormat("{} Help", programInfo_.displayName),
                              .accelerators = {"<Control>question", "F1"},
                              .perform = actions_.showHelp});
  if (actions_.contact)
    // TRANSLATORS: a verb: to write to the people who make the program
    group.commands.push_back({.title = base::trMark("Contact"), .perform = actions_.contact});
  return group;
}

CommandGroup BrowserCommands::program() {
  return {base::trMark("General"),
          {{.title = "About " + programInfo_.displayName,
            .shown = base::trFormat("About {}", programInfo_.displayName),
            .perform = actions_.showAbout},
           // For keys of the desktop's own, and for who starts the program anew to call it.
           {.title = "Toggle Visibility", .perform = actions_.toggleVisibility, .place = MenuPlace::none},
           // For launchers, whose menus can't follow what there is.
           {.title = "Highlights", .perform = actions_.showHighlights, .place = MenuPlace::none},
           {.title = "New Message", .perform = actions_.newMessage, .place = MenuPlace::none},
           {.title = base::trMark("Quit"), .accelerators = {"<Control>q"}, .perform = actions_.quit}}};
}

Condition BrowserCommands::whenHighlighted() const {
  return {[this] { return !highlights_.byMessageId().empty(); },
          [this](auto changed) { return highlights_.changed.subscribe(std::move(changed)); }};
}

Condition BrowserCommands::whenMessageIsOpen() const {
  auto& conversation = windows_.conversation();
  // A conversation is visible only where the address is one of mail.
  return {
      [&conversation] { return *conversation.activeURLContainsMail && *conversation.isConversationVisible; },
      whenTrue(conversation.isConversationVisible).observe};
}

Condition BrowserCommands::whenHidingOnLoseFocus() const {
  static constexpr auto key = settings::keys::hideOnLoseFocus;
  return {[this] { return settings_.get(key); },
          [this](std::function<void()> changed) {
            return settings_.defaults().changed.subscribe([changed = std::move(changed)](const auto& name) {
              if (name == key.name)
                changed();
            });
          }};
}

std::function<void()> BrowserCommands::inKeyWindow(void (*work)(platform::Window& window)) const {
  return [this, work] {
    if (const auto window = application_.focusedWindow())
      work(*window);
  };
}

std::string BrowserCommands::helpWithoutHighlights() const {
  return highlights_.byMessageId().empty() ? base::tr("You have not highlighted content yet.") : "";
}

void BrowserCommands::openCopiedLink() {
  if (const auto& url = *windows_.copiedLink().url)
    actions_.navigate(*url);
}

void BrowserCommands::findInPage() {
  if (const auto tab = focusedTab_.viewModel())
    scope_.spawn(askWithSelection(tab));
}

void BrowserCommands::newMaskedEmailAddress() {
  if (auto tab = focusedTab_.viewModel())
    scope_.spawn(evaluateInTab(std::move(tab), std::string(settings::page::createMaskedEmail)));
}

} // namespace ondrel::ui
