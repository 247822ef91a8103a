#include "ui/commands/HighlightSelection.h"

#include "base/Translation.h"
#include "ui/commands/FocusedTab.h"
#include "web/WindowViewModel.h"

namespace ondrel::ui {

namespace {

constexpr const char* source = "window.__ondrelHighlightSelection()";

void askForSelection(web::WindowViewModel& tab) {
  tab.noticed.emit({.text = base::tr("Select text in a message first.")});
}

} // namespace

void HighlightSelection::perform() {
  if (const auto tab = focusedTab_.viewModel())
    performIn(tab);
}

void HighlightSelection::performIn(const std::shared_ptr<web::WindowViewModel>& tab) {
  scope_.spawn(highlightIn(tab));
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
