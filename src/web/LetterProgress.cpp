#include "web/LetterProgress.h"

#include <algorithm>
#include <array>
#include <utility>

namespace ondrel::web {

namespace {

using namespace std::chrono_literals;

constexpr async::Duration sendGrace = 1s;
constexpr async::Duration discardGrace = 1500ms;
constexpr async::Duration longest = 60s;
// An editor may go before the request has its answer; what the page says afterwards comes in this time.
constexpr async::Duration settlingWhenSent = 1s;
constexpr async::Duration settlingWhenGone = 4s;
// A page that is another one now, or still loading, has this long to become the application.
constexpr async::Duration longestAbsence = 5s;

constexpr std::array<std::pair<std::string_view, LetterState>, 7> words{{
    {"absent", LetterState::absent},
    {"asking", LetterState::asking},
    {"failed", LetterState::failed},
    {"sent", LetterState::sent},
    {"gone", LetterState::gone},
    {"busy", LetterState::busy},
    {"open", LetterState::open},
}};

} // namespace

LetterState letterState(std::string_view word) {
  const auto* found = std::ranges::find(words, word, &std::pair<std::string_view, LetterState>::first);
  return found == words.end() ? LetterState::unknown : found->second;
}

async::Duration LetterProgress::grace() const {
  return end_ == LetterEnd::sent ? sendGrace : discardGrace;
}

LetterProgress::Step LetterProgress::next(LetterState state, async::Duration since) {
  const bool isInGrace = since < grace();
  if (state != LetterState::absent)
    absentAt_.reset();
  switch (state) {
  case LetterState::failed:
    return Step::keep;
  case LetterState::asking:
    isAsked_ = true;
    return Step::ask;
  case LetterState::sent:
  case LetterState::gone: {
    wasUnderWay_ = true;
    if (!letGoAt_)
      letGoAt_ = since;
    const auto settling = state == LetterState::sent ? settlingWhenSent : settlingWhenGone;
    if (isInGrace)
      return Step::wait;
    return since - *letGoAt_ >= settling ? Step::close : Step::hide;
  }
  case LetterState::open:
    // An application may leave the editor as it is while it sends. One that has taken it away or answered a
    // question has given it back.
    if (wasUnderWay_ || isAsked_)
      return Step::keep;
    break;
  case LetterState::busy:
    wasUnderWay_ = true;
    if (std::exchange(isAsked_, false))
      goingSince_ = since;
    break;
  case LetterState::absent:
    if (!absentAt_)
      absentAt_ = since;
    if (since - *absentAt_ >= longestAbsence)
      return Step::doubt;
    break;
  case LetterState::unknown:
    break;
  }
  letGoAt_.reset();
  if (isAsked_)
    return Step::ask;
  if (since - goingSince_ >= longest)
    return Step::doubt;
  return isInGrace ? Step::wait : Step::hide;
}

} // namespace ondrel::web
