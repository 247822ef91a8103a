#include "highlights/HighlightPages.h"

#include "async/Future.h"
#include "async/Timer.h"
#include "base/Json.h"
#include "highlights/file/HighlightStore.h"
#include "platform/WebView.h"
#include "web/WindowViewModel.h"

#include <boost/json/array.hpp>
#include <boost/json/object.hpp>
#include <boost/json/value_from.hpp>

#include <algorithm>
#include <chrono>
#include <utility>

namespace ondrel::highlights {

namespace json = boost::json;
using State = Conversation::State;

namespace {

// A press on an element of a report that a newer one has overtaken is rarely later than one or two.
constexpr std::size_t mostReports = 8;
constexpr std::size_t mostFrames = 64;
// The page tells within half a second which message is open.
constexpr std::chrono::seconds patience{10};

ConversationPtr conversationAt(const jmap::MessageAddress& address) {
  auto conversation = std::make_shared<Conversation>();
  conversation->address = address;
  return conversation;
}

bool isPending(const ConversationPtr& conversation) {
  return conversation && (conversation->state == State::asking || conversation->state == State::unasked);
}

} // namespace

std::vector<std::optional<std::string>> HighlightPages::Shown::messageIds() const {
  if (!conversation)
    return {};
  // The email that was open at the report, which goes with the focus in it.
  const auto& emails = conversation->emails;
  return containerMessageIds(report, emails,
                             holds(emails, report.openId) ? report.openId : conversation->openId);
}

std::optional<std::string> HighlightPages::Shown::messageIn(std::int64_t container) const {
  auto ids = messageIds();
  return container >= 0 && std::cmp_less(container, ids.size()) ? ids[static_cast<std::size_t>(container)]
                                                                : std::nullopt;
}

bool HighlightPages::Shown::isSettled() const {
  return !conversation || conversation->state == State::known;
}

HighlightPages::View& HighlightPages::viewOf(const Tab& tab) {
  const auto found = views_.find(tab);
  if (found != views_.end())
    return found->second;
  std::erase_if(views_, [](const auto& entry) { return entry.first.expired(); });
  return views_[tab];
}

void HighlightPages::messageChanged(const Tab& tab, const std::string& internalId) {
  open(tab, viewOf(tab), internalId);
}

void HighlightPages::open(const Tab& tab, View& view, const std::string& internalId) {
  view.openId = internalId;
  const auto address = jmap::MessageAddress::of(*tab->urlString);
  if (!address)
    return;
  auto conversation = view.conversation;
  const bool isSame = conversation && conversation->isAt(*address);
  if (isSame && conversation->state == State::known && holds(conversation->emails, internalId)) {
    conversation->openId = internalId; // only the focus has moved
    push(tab);
    return;
  }
  if (isSame && conversation->state == State::asking && conversation->openId == internalId)
    return;
  if (!isSame || conversation->state != State::unasked) {
    conversation = conversationAt(*address);
    view.conversation = conversation;
    // A page may tell of its elements before it tells of the message. Those that it showed at another address
    // are the other conversation's.
    for (auto& [id, frame] : view.frames)
      if (!frame.shown.empty() && frame.shown.back().threadId == address->threadId)
        frame.shown.back().conversation = conversation;
  }
  conversation->openId = internalId;
  if (!isSame && lists_.recall(*conversation))
    push(tab);
  else
    scope_.spawn(ask(tab, std::move(conversation)));
}

async::Task<void> HighlightPages::ask(WeakTab weakTab, ConversationPtr conversation) {
  co_await lists_.ask(conversation);
  if (const auto tab = weakTab.lock())
    push(tab);
}

void HighlightPages::containersChanged(const Tab& tab, const platform::FrameInfo& frame,
                                       ContainerReport report) {
  auto& view = viewOf(tab);
  if (report.number == 1)
    view.frames.erase(frame.id); // another document
  if (report.count < 1 && !view.frames.contains(frame.id))
    return; // shows no message
  if (!report.openId.empty() && report.openId != view.openId)
    open(tab, view, report.openId);
  const auto address = jmap::MessageAddress::of(*tab->urlString);
  if (address && (!view.conversation || !view.conversation->isAt(*address)))
    view.conversation = conversationAt(*address);
  if (view.frames.size() >= mostFrames)
    view.frames.erase(view.frames.begin()); // the oldest, which may have gone long ago
  auto& entry = view.frames[frame.id];
  entry.info = frame;
  entry.shown.push_back({std::move(report), address ? view.conversation : nullptr,
                         address ? address->threadId : std::string()});
  if (entry.shown.size() > mostReports)
    entry.shown.pop_front();
  push(tab, entry);
}

void HighlightPages::hostReady(const Tab& tab, const platform::FrameInfo& frame) {
  auto& entry = viewOf(tab).frames[frame.id];
  entry.info = frame;
  entry.isReady = true;
  push(tab, entry);
}

std::optional<HighlightPages::Shown> HighlightPages::shown(const Tab& tab, const platform::FrameInfo& frame,
                                                           std::int64_t number) {
  const auto& frames = viewOf(tab).frames;
  const auto found = frames.find(frame.id);
  if (found == frames.end() || found->second.shown.empty())
    return std::nullopt;
  const auto& reports = found->second.shown;
  if (number == 0)
    return reports.back();
  const auto report =
      std::ranges::find(reports, number, [](const Shown& each) { return each.report.number; });
  return report == reports.end() ? std::nullopt : std::optional(*report);
}

async::Task<void> HighlightPages::settled(WeakTab weakTab, Shown shown) {
  const auto conversation = shown.conversation;
  if (conversation && conversation->state == State::failed)
    scope_.spawn(ask(weakTab, conversation));
  do {
    auto [resolver, future] = async::makeFuture<bool>();
    const auto answer = std::make_shared<async::Resolver<bool>>(std::move(resolver));
    const auto settling = conversation->settled.subscribe([answer] { answer->resolve(true); });
    const async::Timer timer(patience, [answer] { answer->resolve(false); });
    const auto isSettled = co_await std::move(future);
    if (!isSettled)
      co_return;
  } while (conversation->state == State::asking);
}

void HighlightPages::push(const Tab& tab) {
  for (const auto& [id, frame] : viewOf(tab).frames)
    push(tab, frame);
}

void HighlightPages::push(const Tab& tab, const Frame& frame) {
  // While its messages are being asked for, nothing is known of them: the answer comes with theirs.
  if (!frame.isReady || frame.shown.empty() || isPending(frame.shown.back().conversation))
    return;
  const auto& shown = frame.shown.back();
  json::array containers;
  for (const auto& messageId : shown.messageIds()) {
    json::array anchors;
    if (messageId)
      for (const auto& highlight : store_.highlights(*messageId))
        anchors.push_back(highlight.encode());
    containers.push_back(std::move(anchors));
  }
  auto call = "window.__ondrelApplyHighlights(" + base::jsonText(containers);
  if (shown.report.number > 0)
    call += "," + std::to_string(shown.report.number);
  scope_.spawn(evaluate(tab, frame.info, call + ")"));
}

async::Task<void> HighlightPages::evaluate(WeakTab weakTab, platform::FrameInfo frame, std::string call) {
  auto tab = weakTab.lock();
  if (!tab)
    co_return;
  auto evaluation = tab->evaluate(std::move(call), frame);
  tab.reset();
  // A page that couldn't take it gets the whole list again with its next report.
  [[maybe_unused]] const auto ignored = co_await std::move(evaluation);
}

void HighlightPages::takeOff(const Tab& tab, const platform::FrameInfo& frame,
                             const std::vector<std::string>& ids) {
  scope_.spawn(
      evaluate(tab, frame, "window.__ondrelRemoveHighlights(" + base::jsonText(json::value_from(ids)) + ")"));
}

void HighlightPages::takeAllOff() {
  for (const auto& [weakTab, view] : views_)
    if (const auto tab = weakTab.lock())
      for (const auto& [id, frame] : view.frames)
        scope_.spawn(evaluate(tab, frame.info, "window.__ondrelRemoveHighlights(null)"));
}

} // namespace ondrel::highlights
