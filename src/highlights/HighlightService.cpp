#include "highlights/HighlightService.h"

#include "app/WindowManager.h"
#include "base/Json.h"
#include "highlights/ContainerMessages.h"
#include "highlights/HighlightAnchor.h"
#include "highlights/HighlightStore.h"
#include "platform/Panels.h"
#include "web/WindowViewModel.h"

#include <boost/json/array.hpp>
#include <boost/json/object.hpp>
#include <boost/json/parse.hpp>
#include <boost/json/value.hpp>

#include <algorithm>
#include <chrono>
#include <utility>

namespace ondrel::highlights {

namespace {

namespace json = boost::json;

double secondsSince2001() {
  constexpr std::chrono::seconds from1970To2001{978307200};
  return std::chrono::duration<double>(std::chrono::system_clock::now().time_since_epoch() - from1970To2001)
      .count();
}

std::optional<std::vector<std::string>> strings(const std::string& text) {
  json::error_code error;
  const auto value = json::parse(text, error);
  const auto* array = error ? nullptr : value.if_array();
  if (!array || !std::ranges::all_of(*array, &json::value::is_string))
    return std::nullopt;
  std::vector<std::string> result;
  for (const auto& element : *array)
    result.emplace_back(element.get_string());
  return result;
}

// Absent when the container or its message is unknown.
std::optional<std::string> messageIn(const web::WindowViewModel& tab, std::int64_t container) {
  auto ids = containerMessageIds(tab);
  return container >= 0 && std::cmp_less(container, ids.size()) ? ids[static_cast<std::size_t>(container)]
                                                                : std::nullopt;
}

} // namespace

HighlightService::HighlightService(app::WindowManager& windowManager, jmap::MailQueries& mail,
                                   HighlightStore& store, settings::AppSettings& settings,
                                   platform::Panels& panels)
    : windowManager_(windowManager), mail_(mail), store_(store), settings_(settings), panels_(panels),
      storeChanged_(store.changed.subscribe([this] { marks_.reset(); })) {
}

void HighlightService::messageChanged(Tab tab, std::string internalId) {
  scope_.spawn(handleMessageChanged(tab, std::move(internalId)));
}

void HighlightService::containersChanged(Tab tab, std::int64_t count,
                                         std::optional<std::int64_t> focusedIndex) {
  scope_.spawn(handleContainersChanged(tab, count, focusedIndex));
}

void HighlightService::hostReady(Tab tab, platform::FrameInfo frame) {
  scope_.spawn(handleHostReady(tab, std::move(frame)));
}

async::Task<void> HighlightService::handleMessageChanged(WeakTab weakTab, std::string internalId) {
  auto tab = weakTab.lock();
  if (!tab)
    co_return;
  tab->highlightCurrentInternalId = internalId;
  const auto threadId = threadIdFromURL(*tab->urlString);
  if (!threadId)
    co_return;
  const bool sameThread = tab->highlightCurrentThreadId == threadId;
  const bool known =
      std::ranges::count(tab->highlightThreadEmails, internalId, &jmap::ThreadEmailInfo::internalId) > 0;
  if (sameThread && known) {
    // Only the focus has moved.
    const auto current = tab->highlightGeneration;
    tab.reset();
    co_await pushAnchors(weakTab, current);
    co_return;
  }
  const auto generation = ++tab->highlightGeneration;
  tab->highlightCurrentThreadId = threadId;
  // An unknown message of the same thread has come since: the cached list lacks it too.
  if (const auto cached = threadCache_.find(*threadId); !sameThread && cached != threadCache_.end()) {
    tab->highlightThreadEmails = cached->second;
    tab.reset();
    co_await pushAnchors(weakTab, generation);
    co_return;
  }

  tab.reset();
  auto fetched = co_await mail_.threadEmails(*threadId);
  if (!fetched) {
    logger_.error("HighlightService: failed to resolve thread {}", *threadId);
    co_return;
  }
  threadCache_[*threadId] = *fetched;
  tab = weakTab.lock();
  if (!tab || tab->highlightGeneration != generation)
    co_return;
  tab->highlightThreadEmails = std::move(*fetched);
  tab.reset();
  co_await pushAnchors(weakTab, generation);
}

async::Task<void> HighlightService::handleContainersChanged(WeakTab weakTab, std::int64_t count,
                                                            std::optional<std::int64_t> focusedIndex) {
  auto tab = weakTab.lock();
  if (!tab)
    co_return;
  tab->highlightContainerCount = count;
  tab->highlightFocusedContainerIndex = focusedIndex;
  const auto generation = tab->highlightGeneration;
  tab.reset();
  co_await pushAnchors(weakTab, generation);
}

async::Task<void> HighlightService::handleHostReady(WeakTab weakTab, platform::FrameInfo frame) {
  auto tab = weakTab.lock();
  if (!tab)
    co_return;
  tab->highlightContentFrame = std::move(frame);
  const auto generation = tab->highlightGeneration;
  tab.reset();
  co_await pushAnchors(weakTab, generation);
}

async::Task<void> HighlightService::pushAnchors(WeakTab weakTab, std::int64_t generation) {
  auto tab = weakTab.lock();
  if (!tab || !tab->highlightContentFrame || tab->highlightGeneration != generation)
    co_return;
  json::array containers;
  for (const auto& messageId : containerMessageIds(*tab)) {
    json::array anchors;
    if (messageId)
      for (const auto& highlight : store_.highlights(*messageId))
        anchors.push_back(highlight.encode());
    containers.push_back(std::move(anchors));
  }
  auto call = "window.__ondrelApplyHighlights(" + base::jsonText(containers) + ")";
  auto evaluation = tab->evaluate(std::move(call), tab->highlightContentFrame);
  tab.reset();
  // A page that couldn't take it gets the whole list again with its next report.
  [[maybe_unused]] const auto ignored = co_await std::move(evaluation);
}

void HighlightService::create(Tab tab, std::string anchorJSON, std::int64_t containerIndex) {
  const auto messageId = messageIn(*tab, containerIndex);
  auto anchor = HighlightAnchor::decode(anchorJSON);
  if (!messageId || !tab->highlightCurrentThreadId || !anchor) {
    logger_.error("HighlightService: failed to resolve container {} or decode anchor", containerIndex);
    return;
  }
  store_.add({.id = std::move(anchor->id),
              .threadId = *tab->highlightCurrentThreadId,
              .exact = std::move(anchor->exact),
              .prefix = std::move(anchor->prefix),
              .suffix = std::move(anchor->suffix),
              .occurrenceIndex = anchor->occurrenceIndex,
              .createdAt = secondsSince2001()},
             *messageId);
  highlightsChanged(std::move(tab));
}

void HighlightService::remove(Tab tab, std::string highlightId, std::int64_t containerIndex) {
  const auto messageId = messageIn(*tab, containerIndex);
  if (!messageId) {
    logger_.error("HighlightService: failed to resolve container {} for removal", containerIndex);
    return;
  }
  store_.remove(highlightId, *messageId);
  highlightsChanged(std::move(tab));
}

void HighlightService::clearOrphaned(Tab tab, std::string idsJSON, std::int64_t containerIndex) {
  const auto messageId = messageIn(*tab, containerIndex);
  const auto ids = strings(idsJSON);
  if (!messageId || !ids) {
    logger_.error("HighlightService: failed to resolve container {} for clearing orphaned highlights",
                  containerIndex);
    return;
  }
  for (const auto& id : *ids)
    store_.remove(id, *messageId);
  highlightsChanged(std::move(tab));
}

void HighlightService::highlightsChanged(Tab tab) {
  scope_.spawn(pushMailboxMarksToAllWindows());
  scope_.spawn(syncTagOfTab(std::move(tab)));
}

async::Task<void> HighlightService::removeAllHighlights() {
  platform::Alert alert{
      "Remove All Highlights?",
      "This deletes every highlight saved in Ondrel. This can't be undone unless you've exported them first.",
      platform::AlertStyle::warning,
      {"Cancel", "Remove All"}};
  const auto active = windowManager_.activeWindow();
  const auto answer = co_await panels_.runAlert(std::move(alert), active ? active->first : nullptr);
  if (answer != platform::Panels::firstButton + 1)
    co_return;
  auto threadIds = store_.allThreadIds();
  store_.removeAll();
  co_await pushMailboxMarksToAllWindows();
  co_await syncAllTags(std::move(threadIds));
}

} // namespace ondrel::highlights
