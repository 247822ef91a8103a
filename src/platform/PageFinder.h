#pragma once

#include "base/Event.h"

#include <string>

namespace ondrel::platform {

// Looks for text in the page of one web view, its frames and its fields included. A part of the web view.
// Which of the matches is the selected one, the engine doesn't say. Main thread only.
class PageFinder {
 public:
  // How far matches are counted; more are told as one more than this.
  static constexpr unsigned mostCounted = 1000;

  virtual ~PageFinder() = default;

  // Marks what is like the text, whatever its case, selects the first match from the page's selection on and
  // scrolls to it. The one that is selected already stays so if it goes on fitting.
  virtual void find(const std::string& text) = 0;
  // Selects the next match of the text that was looked for last, or the one before; on from the other end of
  // the page where there are no more.
  virtual void findNext() = 0;
  virtual void findPrevious() = 0;
  // Takes the marks away; the selection stays.
  virtual void finish() = 0;

  // How many matches the page had when it was searched; 0 when nothing was found. Told once when all that was
  // asked for has been answered, later than it was asked, and never by a page that hangs.
  base::Event<unsigned> found;
};

} // namespace ondrel::platform
