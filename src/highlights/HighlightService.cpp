#include "highlights/HighlightService.h"

#include "app/WindowManager.h"
#include "base/Translation.h"
#include "highlights/file/HighlightAnchor.h"
#include "highlights/file/HighlightStore.h"
#include "platform/Panels.h"
#include "web/ScriptMessageRouter.h"
#include "web/WindowViewModel.h"
#include "web/page/ScriptMessageFields.h"

#include <boost/json/parse.hpp>
#include <boost/json/value.hpp>

#include <algorithm>
#include <chrono>
#include <utility>

namespace ondrel::highlights {

namespace {

namespace json = boost::json;

constexpr std::chrono::seconds timeToUndo{10};

double secondsSince2001() {
  constexpr std::chrono::seconds from1970To2001{978307200};
  return std::chrono::duration<double>(std::chrono::system_clock::now().time_since_epoch() - from1970To2001)
      .count();
}

std::optional<std::vector<std::string>> strings(const std::string& text) {
  json::error_code error;
  const auto value = json::parse(text, error);
  const base::JsonReader list(value);
  auto result = list.strings();
  return list.array() && result.size() == list.size() ? std::optional(std::move(result)) : std::nullopt;
}

} // namespace

HighlightService::HighlightService(app::WindowManager& windowManager, web::ScriptMessageRouter& messages,
                                   jmap::MailQueries& mail, HighlightStore& store,
                                   settings::AppSettings& settings, platform::Panels& panels)
    : windowManager_(windowManager), mail_(mail), store_(store), settings_(settings), panels_(panels),
      pages_(mail, store), storeChanged_(store.changed.subscribe([this] { marks_.reset(); })) {
  takeMessages(messages);
}

void HighlightService::takeMessages(web::ScriptMessageRouter& messages) {
  using Received = web::ScriptMessageRouter::Received;
  const auto take = [&](const char* type, std::function<void(const Received&)> handler) {
    messages_.push_back(messages.add(type, web::Trust::serviceOnly, std::move(handler)));
  };
  // A message that lacks what it needs is ignored.
  const auto takeAt = [&](const char* type, const char* field,
                          void (HighlightService::*handle)(const Place&, const std::string&)) {
    take(type, [this, field, handle](const Received& message) {
      const auto* text = message.fields.find(field);
      const auto container = message.fields.integer("containerIndex");
      if (text && container)
        (this->*handle)({.tab = message.tab,
                         .frame = message.frame,
                         .report = message.fields.integer("report").value_or(0),
                         .container = *container},
                        *text);
    });
  };
  take("ondrelMessageChanged", [this](const Received& message) {
    if (const auto* internalId = message.fields.find("internalId"))
      pages_.messageChanged(message.tab, *internalId);
  });
  take("ondrelHighlightContainersChanged", [this](const Received& message) {
    if (auto report = ContainerReport::from(message.fields))
      pages_.containersChanged(message.tab, message.frame, *std::move(report));
  });
  take("ondrelHighlightHostReady",
       [this](const Received& message) { pages_.hostReady(message.tab, message.frame); });
  takeAt("ondrelHighlightCreate", "anchorJSON", &HighlightService::create);
  takeAt("ondrelHighlightRemove", "highlightId", &HighlightService::remove);
  takeAt("ondrelHighlightClearOrphaned", "idsJSON", &HighlightService::clearOrphaned);
  take("ondrelMailboxMarkersReady",
       [this](const Received& message) { scope_.spawn(pushMailboxMarks(message.tab)); });
}

HighlightService::Message HighlightService::messageAt(const HighlightPages::Shown& shown,
                                                      std::int64_t container) {
  if (!shown.conversation)
    return {};
  return {shown.conversation->threadId, shown.messageIn(container), shown.conversation->emails};
}

void HighlightService::withMessageAt(const Place& place, WithMessage use) {
  const auto tab = place.tab.lock();
  auto shown = tab ? pages_.shown(tab, place.frame, place.report) : std::nullopt;
  if (!shown || shown->isSettled() || place.container < 0)
    use(shown ? messageAt(*shown, place.container) : Message{});
  else
    scope_.spawn(waitForMessage(place, *std::move(shown), std::move(use)));
}

async::Task<void> HighlightService::waitForMessage(Place place, HighlightPages::Shown shown,
                                                   WithMessage use) {
  co_await pages_.settled(place.tab, shown);
  use(messageAt(shown, place.container));
}

void HighlightService::create(const Place& place, const std::string& anchorJSON) {
  auto anchor = HighlightAnchor::decode(anchorJSON);
  if (!anchor) {
    logger_.error("HighlightService: failed to resolve container {} or decode anchor", place.container);
    return;
  }
  waiting_.insert(anchor->id);
  withMessageAt(place, [this, place, anchor = *std::move(anchor),
                        createdAt = secondsSince2001()](const Message& message) {
    // Taken away again meanwhile?
    if (waiting_.erase(anchor.id) > 0)
      save(place, anchor, createdAt, message);
  });
}

void HighlightService::save(const Place& place, HighlightAnchor anchor, double createdAt,
                            const Message& message) {
  if (!message.id) {
    notSaved(place, anchor);
    return;
  }
  store_.add(PersistedHighlight::from(std::move(anchor), message.threadId, createdAt), *message.id);
  highlightsChanged(message.threadEmails);
}

// A mark that isn't saved doesn't stay, since it would be gone the next time.
void HighlightService::notSaved(const Place& place, const HighlightAnchor& anchor) {
  logger_.error("HighlightService: failed to resolve container {} or decode anchor", place.container);
  const auto tab = place.tab.lock();
  if (!tab)
    return;
  pages_.takeOff(tab, place.frame, {anchor.id});
  tab->noticed.emit(
      {.text = base::tr("The highlight was not saved: its message could not be found on the server.")});
}

void HighlightService::remove(const Place& place, const std::string& id) {
  if (waiting_.erase(id) > 0)
    return;
  withMessageAt(place, [this, place, id](const Message& message) {
    if (message.id)
      removeFrom(place, message, {id});
    else
      logger_.error("HighlightService: failed to resolve container {} for removal", place.container);
  });
}

void HighlightService::clearOrphaned(const Place& place, const std::string& idsJSON) {
  const auto ids = strings(idsJSON);
  withMessageAt(place, [this, place, ids](const Message& message) {
    if (message.id && ids)
      removeFrom(place, message, *ids);
    else
      logger_.error("HighlightService: failed to resolve container {} for clearing orphaned highlights",
                    place.container);
  });
}

void HighlightService::removeFrom(const Place& place, const Message& message,
                                  const std::vector<std::string>& ids) {
  std::vector<PersistedHighlight> removed;
  for (const auto& highlight : store_.highlights(*message.id))
    if (std::ranges::find(ids, highlight.id) != ids.end())
      removed.push_back(highlight);
  for (const auto& id : ids)
    store_.remove(id, *message.id);
  highlightsChanged(message.threadEmails);
  if (const auto tab = place.tab.lock(); tab && !removed.empty())
    tab->noticed.emit({.text = base::trPlural("Highlight removed", "Highlights removed", removed.size()),
                       .button = base::tr("Undo"),
                       .act = [this, place, message, removed] { bringBack(place, message, removed); },
                       .time = timeToUndo});
}

void HighlightService::bringBack(const Place& place, const Message& message,
                                 const std::vector<PersistedHighlight>& removed) {
  for (const auto& highlight : removed) {
    const auto& present = store_.highlights(*message.id);
    if (std::ranges::find(present, highlight.id, &PersistedHighlight::id) == present.end())
      store_.add(highlight, *message.id);
  }
  highlightsChanged(message.threadEmails);
  if (const auto tab = place.tab.lock())
    pages_.push(tab);
}

void HighlightService::highlightsChanged(Emails threadEmails) {
  scope_.spawn(pushMailboxMarksToAllWindows());
  scope_.spawn(syncTag(std::move(threadEmails)));
}

async::Task<void> HighlightService::removeAllHighlights() {
  platform::Alert alert{base::tr("Remove All Highlights?"),
                        base::tr("This deletes every highlight saved in Ondrel. This can't be undone unless "
                                 "you've exported them first."),
                        platform::AlertStyle::warning,
                        {base::tr("Cancel"), base::tr("Remove All")}};
  const auto active = windowManager_.windows().activeWindow();
  const auto answer = co_await panels_.runAlert(std::move(alert), active ? active->first : nullptr);
  if (answer != platform::Panels::firstButton + 1)
    co_return;
  auto threadIds = store_.allThreadIds();
  store_.removeAll();
  pages_.takeAllOff();
  co_await pushMailboxMarksToAllWindows();
  co_await syncAllTags(std::move(threadIds));
}

} // namespace ondrel::highlights
