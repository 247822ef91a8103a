#include "ui/highlights/HighlightsPage.h"

#include "base/JsonReader.h"
#include "base/Url.h"
#include "platform/Download.h"
#include "platform/WebView.h"

#include <fmt/format.h>

#include <algorithm>
#include <utility>

namespace ondrel::ui {

namespace {

using highlights::HighlightDocument;

// What a page without an address counts as.
constexpr std::string_view blankPage = "about:blank";
// A page that is slow to say where it is must not hold up what is new.
constexpr auto placeDeadline = std::chrono::milliseconds(500);

// Nothing at the top of the page, where new entries shall be seen.
constexpr const char* readPlace = R"((() => {
  const tops = [...document.querySelectorAll(".highlight")].map((each) => each.getBoundingClientRect());
  const first = tops.findIndex((each) => each.bottom > 0);
  return window.scrollY > 0 && first >= 0 ? { entry: first, top: tops[first].top } : null;
})())";

constexpr const char* scroll = R"((() => {{
  const entry = document.querySelectorAll(".highlight")[{}];
  if (entry) window.scrollBy(0, entry.getBoundingClientRect().top - {});
}})())";

} // namespace

HighlightsPage::HighlightsPage(platform::WebViewFactory& webViews, Events events)
    : events_(std::move(events)), webView_(webViews.makeDocumentView()) {
  webView_->setDelegate(this);
}

HighlightsPage::~HighlightsPage() {
  webView_->setDelegate(nullptr);
}

void* HighlightsPage::widget() const {
  return webView_->nativeView().handle;
}

void HighlightsPage::show(HighlightDocument document, bool keepsPlace) {
  if (!isDrawing_ && isShown_ && document == shown_)
    return;
  next_ = std::move(document);
  keepsPlace_ = keepsPlace_ && keepsPlace;
  if (!std::exchange(isDrawing_, true))
    scope_.spawn(draw());
}

void HighlightsPage::reload() {
  isShown_ = false;
  if (!next_)
    show(shown_, false);
}

async::Task<void> HighlightsPage::draw() {
  while (next_) {
    std::optional<Place> from;
    if (isShown_ && keepsPlace_ && !next_->entries.empty())
      from = co_await place();
    const auto to = from && keepsPlace_ ? moved(*from, *next_) : std::nullopt;
    shown_ = *std::exchange(next_, std::nullopt);
    keepsPlace_ = true;
    auto [resolver, future] = async::makeFuture<bool>();
    loading_.emplace(std::move(resolver));
    webView_->loadHTML(shown_.html());
    const auto isLoaded = co_await std::move(future);
    isShown_ = isLoaded.value_or(false);
    if (isShown_ && to)
      co_await scrollTo(*to);
  }
  isDrawing_ = false;
}

async::Task<std::optional<HighlightsPage::Place>> HighlightsPage::place() {
  const auto answer = co_await webView_->evaluate(readPlace, std::nullopt, placeDeadline);
  const auto reader = answer ? base::JsonReader(*answer) : base::JsonReader();
  const auto entry = reader["entry"].wholeNumber();
  const auto top = reader["top"].number();
  if (!entry || *entry < 0 || !top)
    co_return std::nullopt;
  co_return Place{static_cast<std::size_t>(*entry), *top};
}

std::optional<HighlightsPage::Place> HighlightsPage::moved(const Place& place,
                                                           const HighlightDocument& document) const {
  for (auto i = place.entry; i < shown_.entries.size(); ++i) {
    const auto& entries = document.entries;
    const auto found = std::ranges::find(entries, shown_.entries[i].id, &HighlightDocument::Entry::id);
    if (found != entries.end())
      return Place{static_cast<std::size_t>(found - entries.begin()), place.top};
  }
  return std::nullopt;
}

async::Task<void> HighlightsPage::scrollTo(Place place) {
  [[maybe_unused]] const auto ignored = co_await webView_->evaluate(
      fmt::format(fmt::runtime(scroll), place.entry, place.top), std::nullopt, placeDeadline);
}

void HighlightsPage::loaded() {
  if (auto loading = std::exchange(loading_, std::nullopt))
    loading->resolve(true);
}

void HighlightsPage::webProcessDidTerminate(bool) {
  isShown_ = false;
  if (auto loading = std::exchange(loading_, std::nullopt))
    loading->resolve(false);
  events_.stopped();
}

void HighlightsPage::decidePolicy(const platform::NavigationAction& action, platform::PolicyReply reply) {
  if (action.type != platform::NavigationType::linkActivated) {
    // Its own page and no other: something may be dropped on it.
    const bool isOwnPage = !action.url || *action.url == blankPage;
    std::move(reply)(isOwnPage ? platform::NavigationPolicy::allow : platform::NavigationPolicy::cancel);
    return;
  }
  std::move(reply)(platform::NavigationPolicy::cancel);
  const auto url = action.url ? base::Url::parse(*action.url) : std::nullopt;
  // An address that the project doesn't have is an empty link, to this page.
  if (url && url->isWeb())
    events_.clicked(url->absoluteString());
}

void HighlightsPage::decidePolicy(const platform::NavigationResponse&, platform::PolicyReply reply) {
  std::move(reply)(platform::NavigationPolicy::allow);
}

} // namespace ondrel::ui
