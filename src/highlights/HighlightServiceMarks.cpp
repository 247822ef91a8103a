#include "highlights/HighlightService.h"

#include "app/WindowManager.h"
#include "base/Json.h"
#include "highlights/SequentialTasks.h"
#include "highlights/file/HighlightStore.h"
#include "settings/AppSettings.h"
#include "web/WindowViewModel.h"

#include <boost/json/value.hpp>
#include <boost/json/value_from.hpp>
#include <fmt/ranges.h>

#include <algorithm>
#include <chrono>

namespace ondrel::highlights {

namespace {

// A page that runs its script at all does so sooner. One that hangs is given up only at the deadline of its
// evaluation, and the other tabs and an import that waits for its end shouldn't feel that.
constexpr std::chrono::milliseconds patience{500};

} // namespace

const HighlightService::Marks& HighlightService::marks() {
  if (!marks_) {
    const auto threadIds = store_.allThreadIds();
    marks_ = {threadIds.size(), base::jsonText(boost::json::value_from(threadIds)),
              fmt::format("{}", fmt::join(threadIds, ","))};
  }
  return *marks_;
}

async::Task<void> HighlightService::pushMailboxMarks(WeakTab weakTab) {
  auto tab = weakTab.lock();
  if (!tab || !tab->showsService())
    co_return;
  const auto pushed = marks();
  auto evaluation = tab->evaluate("window.__ondrelApplyMailboxHighlightMarks(" + pushed.json + ")");
  tab.reset();
  const auto result = co_await std::move(evaluation);
  if (result)
    logger_.info("pushMailboxMarks: pushed {} threadId(s) {}, JS returned {}", pushed.count, pushed.joined,
                 base::jsonText(*result));
  else
    logger_.error("pushMailboxMarks: evaluateJavaScript failed: {}", description(result.error()));
}

async::Task<void> HighlightService::pushMailboxMarksToAllWindows() {
  std::vector<async::Task<void>> pushes;
  for (const auto& tab : windowManager_.windows().viewModels())
    pushes.push_back(pushMailboxMarks(tab));
  co_await runSequentially(scope_, std::move(pushes), patience);
}

async::Task<void> HighlightService::syncTag(std::vector<jmap::ThreadEmailInfo> threadEmails) {
  if (!settings_.get(settings::keys::highlightTagEnabled)) {
    logger_.info("syncTag: skipped — feature disabled in Settings");
    co_return;
  }
  const auto name = settings_.highlightTagName();
  if (name.empty()) {
    logger_.info("syncTag: skipped — tag name is empty");
    co_return;
  }
  const auto mailboxId = co_await resolveTagMailbox(name);
  if (!mailboxId) {
    logger_.error("syncTag: no mailbox/tag named '{}' found — has it been created in Fastmail?", name);
    co_return;
  }
  // What has no Message-ID is labelled by nobody.
  std::erase_if(threadEmails, [](const auto& email) { return email.messageId.empty(); });
  if (threadEmails.empty()) {
    logger_.info("syncTag: skipped — no resolved thread emails");
    co_return;
  }
  const bool hasHighlights = std::ranges::any_of(
      threadEmails, [this](const auto& email) { return !store_.highlights(email.messageId).empty(); });
  std::vector<std::string> internalIds;
  internalIds.reserve(threadEmails.size());
  for (auto& email : threadEmails)
    internalIds.push_back(std::move(email.internalId));
  logger_.info("syncTag: setting mailbox '{}' ({}) to {} on internalId(s) {}", name, *mailboxId,
               hasHighlights, fmt::join(internalIds, ","));
  co_await mail_.setMailboxMembership(std::move(internalIds), *mailboxId, hasHighlights);
}

async::Task<std::optional<std::string>> HighlightService::resolveTagMailbox(std::string name) {
  if (cachedTagMailbox_ && cachedTagMailbox_->first == name)
    co_return cachedTagMailbox_->second;
  const auto found = co_await mail_.findMailboxId(name);
  if (!found || !*found)
    co_return std::nullopt;
  cachedTagMailbox_.emplace(std::move(name), **found);
  co_return **found;
}

async::Task<void> HighlightService::syncAllTags(std::set<std::string> threadIds, TagProgress progress) {
  if (!settings_.get(settings::keys::highlightTagEnabled))
    co_return;
  std::size_t done = 0;
  for (const auto& threadId : threadIds) {
    if (progress && !progress(done++))
      co_return;
    auto threadEmails = co_await mail_.threadEmails(threadId);
    if (threadEmails)
      co_await syncTag(std::move(*threadEmails));
  }
}

} // namespace ondrel::highlights
