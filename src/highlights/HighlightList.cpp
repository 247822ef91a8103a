#include "highlights/HighlightList.h"

#include "base/Translation.h"
#include "highlights/file/HighlightStore.h"

#include <algorithm>
#include <utility>

namespace ondrel::highlights {

HighlightList::HighlightList(HighlightStore& store, HighlightExport& highlightExport)
    : store_(store), export_(highlightExport),
      storeChanged_(store_.changed.subscribe([this] { storeChanged(); })) {
  lookUpNew();
  if (store_.byMessageId().empty())
    show();
}

void HighlightList::storeChanged() {
  if (store_.byMessageId().empty())
    show();
  else if (!refresh_)
    refresh_.emplace(refreshPause, [this] {
      refresh_.reset();
      if (document_)
        show();
      lookUpNew();
    });
}

void HighlightList::show() {
  refresh_.reset();
  everything_ = export_.document(messages_, false);
  problem_ = std::exchange(everything_.problem, "");
  if (isLookingUp_)
    problem_ = isSlow_ ? base::tr("The mail server hasn't answered yet.") : "";
  document_ = everything_.matching(search_);
  changed.emit(false);
}

void HighlightList::search(std::string words) {
  if (std::exchange(search_, words) == words || !document_)
    return;
  document_ = everything_.matching(search_);
  changed.emit(true);
}

bool HighlightList::hasNew() const {
  return std::ranges::any_of(store_.byMessageId(),
                             [this](const auto& each) { return !asked_.contains(each.first); });
}

void HighlightList::lookUpNew() {
  if (isLookingUp_ || !hasNew())
    return;
  isLookingUp_ = true;
  isSlow_ = false;
  patience_ = async::Timer(patience, [this] {
    isSlow_ = true;
    show();
  });
  scope_.emplace().spawn(lookUp());
  if (document_)
    show();
}

void HighlightList::lookUpAgain() {
  asked_.clear();
  isLookingUp_ = false;
  lookUpNew();
}

async::Task<void> HighlightList::lookUp() {
  while (hasNew()) {
    std::set<std::string> ids;
    for (const auto& [messageId, list] : store_.byMessageId()) {
      asked_.insert(messageId);
      if (!messages_.found.contains(messageId) && !messages_.missing.contains(messageId))
        ids.insert(messageId);
    }
    auto answer = co_await export_.lookUp(std::move(ids), [](const TransferProgress&) {});
    messages_.found.merge(answer.found);
    messages_.missing.merge(answer.missing);
    messages_.problem = std::move(answer.problem);
    isLookingUp_ = hasNew();
    if (!isLookingUp_)
      patience_.stop();
    show();
  }
}

} // namespace ondrel::highlights
