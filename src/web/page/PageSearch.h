#pragma once

#include "base/Event.h"
#include "base/Observable.h"

#include <memory>
#include <string>

namespace ondrel::platform {
class PageFinder;
class WebView;
} // namespace ondrel::platform

namespace ondrel::web {

// What the user looks for in the page of one tab, and what has come of it. Main thread only.
class PageSearch {
 public:
  struct State {
    enum class Outcome { none, searching, found, notFound }; // none: of this page nothing is known
    bool isOpen = false;                                     // its bar shows
    std::string text{};
    Outcome outcome = Outcome::none;
    unsigned matches = 0; // when found, as platform::PageFinder counts

    bool operator==(const State&) const = default;
  };
  base::Observable<State> state;
  // The user wants to write what to look for; the bar is open by then.
  base::Event<> asked;

  void setPage(std::weak_ptr<platform::WebView> page);
  // Another page, or another part of it, is shown: what was counted holds no more.
  void pageDidChange();

  void ask();
  // Looks for it; an empty text for nothing.
  void setText(std::string text);
  // On from the match that is selected. Without a text the user is asked for one.
  void next();
  void previous();
  void close();

 private:
  template <class Edit>
  void change(Edit edit);
  void step(void (platform::PageFinder::*step)());
  void look();
  void unmark();
  void found(unsigned matches);

  std::weak_ptr<platform::WebView> page_;
  bool isMarked_ = false; // the page's matches are those of the text
  bool hasMarks_ = false; // maybe of before: they stay in a document that changes its address alone
  base::Subscription answers_;
};

} // namespace ondrel::web
