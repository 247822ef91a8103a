#include "highlights/ThreadLists.h"

#include "async/sleep.h"

#include <chrono>
#include <utility>

namespace ondrel::highlights {

using namespace std::chrono_literals;
using State = Conversation::State;

namespace {

// Before each attempt.
constexpr std::chrono::seconds pauses[] = {0s, 2s, 8s, 30s};

} // namespace

bool ThreadLists::recall(Conversation& conversation) const {
  const auto found = known_.find(conversation.address.threadId);
  if (found == known_.end() || !holds(found->second, conversation.openId))
    return false;
  conversation.threadId = found->first;
  conversation.emails = found->second;
  conversation.state = State::known;
  return true;
}

async::Task<void> ThreadLists::ask(ConversationPtr conversation) {
  const auto turn = ++conversation->asked;
  conversation->state = State::asking;
  for (const auto pause : pauses) {
    if (pause > 0s) {
      const bool slept = co_await async::sleep(pause);
      if (!slept || conversation.use_count() == 1)
        co_return;
    }
    if (conversation->asked != turn)
      co_return;
    auto list = co_await find(conversation->address.threadId, conversation->openId);
    if (conversation->asked != turn)
      co_return;
    if (list) {
      conversation->threadId = std::move(list->threadId);
      conversation->emails = std::move(list->emails);
      conversation->state = State::known;
      break;
    }
    logger_.error("HighlightService: failed to resolve thread {}", conversation->address.threadId);
    if (!list.error().isPassing())
      break;
  }
  if (conversation->state != State::known)
    conversation->state = State::failed;
  conversation->settled.emit();
}

async::Task<jmap::Result<ThreadLists::List>> ThreadLists::find(std::string threadId, std::string openId) {
  auto list = jmap::Result<List>(std::unexpected(jmap::JMAPError::badResponse()));
  if (threadId != openId)
    list = co_await listOf(threadId);
  if (list ? holds(list->emails, openId) : list.error().isPassing())
    co_return list;
  // The address names an email, or another conversation than the one of the open message.
  const auto place = co_await mail_.findMailboxNameAndThreadId(openId);
  if (!place && place.error().isPassing())
    co_return std::unexpected(place.error());
  if (!place || place->threadId == threadId)
    co_return list;
  co_return co_await listOf(place->threadId);
}

async::Task<jmap::Result<ThreadLists::List>> ThreadLists::listOf(std::string threadId) {
  auto emails = co_await mail_.threadEmails(threadId);
  if (!emails)
    co_return std::unexpected(std::move(emails).error());
  known_[threadId] = *emails;
  co_return List{std::move(threadId), *std::move(emails)};
}

} // namespace ondrel::highlights
