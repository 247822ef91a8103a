#pragma once

#include "async/EventLoop.h"

#include <optional>
#include <string_view>

namespace ondrel::web {

enum class LetterEnd { sent, discarded };

// What the page says of a letter; see letterStateScript.
enum class LetterState { unknown, absent, asking, failed, sent, gone, busy, open };

// A word that isn't one of the script's is unknown.
LetterState letterState(std::string_view word);

// Decides what becomes of the window of a letter that the user has sent or discarded. Times count from that
// moment.
class LetterProgress {
 public:
  enum class Step {
    wait,  // as it is, for now
    hide,  // off the screen, and wait
    ask,   // on the screen, for the page asks; and wait
    close, // the page has let go of the letter
    keep,  // the letter is the user's again
    doubt, // the same, and nobody knows whether the service has it
  };

  explicit LetterProgress(LetterEnd end) : end_(end) {}

  LetterEnd end() const { return end_; }
  async::Duration grace() const;
  // A box of the engine's asks for the page, which can't say a word until it is answered.
  void pageAsks() { isAsked_ = true; }
  bool isAsked() const { return isAsked_; }
  Step next(LetterState state, async::Duration since);

 private:
  LetterEnd end_;
  bool wasUnderWay_ = false;
  bool isAsked_ = false;
  async::Duration goingSince_{0}; // without the time of a question
  std::optional<async::Duration> letGoAt_;
  std::optional<async::Duration> absentAt_;
};

} // namespace ondrel::web
