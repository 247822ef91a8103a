#include "web/page/PageSearch.h"

#include "platform/PageFinder.h"
#include "platform/WebView.h"

#include <utility>

namespace ondrel::web {

using platform::PageFinder;
using Outcome = PageSearch::State::Outcome;

template <class Edit>
void PageSearch::change(Edit edit) {
  auto changed = *state;
  edit(changed);
  state.set(std::move(changed));
}

void PageSearch::setPage(std::weak_ptr<platform::WebView> page) {
  page_ = std::move(page);
  answers_.reset();
  hasMarks_ = false;
  pageDidChange();
  if (const auto live = page_.lock())
    answers_ = live->finder().found.subscribe([this](unsigned matches) { found(matches); });
}

void PageSearch::pageDidChange() {
  isMarked_ = false;
  change([](State& now) { now.outcome = Outcome::none; });
}

void PageSearch::ask() {
  change([](State& now) { now.isOpen = true; });
  asked.emit();
}

void PageSearch::setText(std::string text) {
  if (text == state->text && isMarked_)
    return;
  change([&](State& now) { now.text = std::move(text); });
  if (!state->text.empty())
    look();
  else
    unmark();
}

void PageSearch::next() {
  step(&PageFinder::findNext);
}

void PageSearch::previous() {
  step(&PageFinder::findPrevious);
}

void PageSearch::step(void (PageFinder::*step)()) {
  if (state->text.empty()) {
    ask();
    return;
  }
  change([](State& now) { now.isOpen = true; });
  const bool wasMarked = isMarked_;
  if (!wasMarked)
    look();
  const auto page = page_.lock();
  if (page && (wasMarked || step == &PageFinder::findPrevious))
    (page->finder().*step)();
}

void PageSearch::look() {
  const auto page = page_.lock();
  if (!page)
    return;
  isMarked_ = hasMarks_ = true;
  change([](State& now) { now.outcome = Outcome::searching; });
  page->finder().find(state->text);
}

void PageSearch::close() {
  if (!state->isOpen)
    return;
  unmark();
  change([](State& now) { now.isOpen = false; });
}

void PageSearch::unmark() {
  if (const auto page = page_.lock(); page && hasMarks_)
    page->finder().finish();
  hasMarks_ = false;
  pageDidChange();
}

void PageSearch::found(unsigned matches) {
  // It may be the answer to what is looked for no more.
  if (isMarked_)
    change([matches](State& now) {
      now.outcome = matches > 0 ? Outcome::found : Outcome::notFound;
      now.matches = matches;
    });
}

} // namespace ondrel::web
