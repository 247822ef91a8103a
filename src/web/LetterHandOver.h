#pragma once

#include "async/Scope.h"
#include "web/LetterProgress.h"

#include <memory>
#include <string>

namespace ondrel::web {

class WindowViewModel;

// Sees the letter of one tab off. After a time of grace the window goes off the screen, but lives on with its
// page until the page has let go of the letter: a request ends with its page. If that fails, the page asks
// something or a minute passes, the window comes back with the letter in it. Main thread only.
class LetterHandOver {
 public:
  // `stateScript` is the text of letterStateScript.
  LetterHandOver(std::weak_ptr<WindowViewModel> viewModel, std::string stateScript);
  ~LetterHandOver();
  LetterHandOver(const LetterHandOver&) = delete;
  LetterHandOver& operator=(const LetterHandOver&) = delete;

  // The user has sent or discarded it; again within the grace, which then starts anew.
  void begin(LetterEnd end);
  // The user has taken back a discard, if there is one.
  void discardUndone();
  // The page asks the user something through the engine.
  void pageAsks();

 private:
  bool isGoing() const;
  void stop();
  bool isOffScreen() const;
  void hide();
  void bringBack();
  // False when that was the end.
  bool take(LetterProgress::Step step);
  async::Task<void> follow();
  async::Task<LetterState> ask();

  const std::weak_ptr<WindowViewModel> viewModel_;
  const std::string stateScript_;
  LetterProgress progress_{LetterEnd::sent};
  async::TaskHandle task_;
  async::Scope scope_;
};

} // namespace ondrel::web
