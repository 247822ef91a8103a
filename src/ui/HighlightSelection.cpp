#include "ui/HighlightSelection.h"

#include "settings/AppSettings.h"
#include "ui/KeyTab.h"
#include "web/WindowViewModel.h"

namespace ondrel::ui {

namespace {

constexpr const char* source = "window.__ondrelHighlightSelection()";

void askForSelection(web::WindowViewModel& tab) {
  tab.noticed.emit({.text = "Select text in a message first."});
}

// The page that is shown, not one on its way.
bool showsService(const web::WindowViewModel& tab, const settings::AppSettings& settings) {
  return settings.isServiceOrigin(*tab.urlString) && tab.foreignHost->empty();
}

} // namespace

void HighlightSelection::perform() {
  const auto tab = keyTab_.viewModel();
  if (!tab)
    return;
  if (showsService(*tab, settings_))
    scope_.spawn(highlightIn(tab));
  else
    askForSelection(*tab);
}

async::Task<void> HighlightSelection::highlightIn(std::weak_ptr<web::WindowViewModel> weakTab) {
  using Kind = platform::ScriptError::Kind;
  auto tab = weakTab.lock();
  if (!tab)
    co_return;
  auto answering = tab->evaluate(source);
  tab.reset();
  const auto answer = co_await std::move(answering);
  tab = weakTab.lock();
  // A page that hangs has a bar of its own that says so.
  const bool isSilent =
      !answer && (answer.error().kind == Kind::gone || answer.error().kind == Kind::timedOut);
  const bool isDone = answer && answer->is_bool() && answer->get_bool();
  if (tab && !isDone && !isSilent)
    askForSelection(*tab);
}

} // namespace ondrel::ui
