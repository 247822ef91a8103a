#pragma once

#include "base/Event.h"
#include "base/Observable.h"

#include <functional>
#include <string>
#include <vector>

namespace ondrel::platform {

// The program's icon in the desktop's panel, with a menu. A desktop without a place for it shows nothing; one
// that gets such a place later shows it then. Main thread only.
class StatusItem {
 public:
  struct Face {
    bool attention = false; // something waits for the user
    std::string title;      // one line: for lists of items, and for those who don't see the icon
    std::string toolTip;    // one line, shown below the program's name
    std::string label;      // a few characters beside the icon, where there is room; empty for none

    bool operator==(const Face&) const = default;
  };
  struct Row {
    std::string title;
    std::function<void()> perform;
    std::string iconName{};          // of the desktop's theme; empty for none
    std::vector<std::string> keys{}; // what does the same in the program's windows: "Control", "comma"
  };

  virtual ~StatusItem() = default;

  virtual void setFace(Face face) = 0;
  virtual void setMenu(std::vector<Row> rows) = 0; // from top to bottom
  // Into the panel, or out of it. It isn't there at first.
  virtual void setInserted(bool inserted) = 0;

  base::Event<> activated;               // a click on the icon itself
  base::Observable<bool> isShown{false}; // inserted, and the desktop has a place for it
};

} // namespace ondrel::platform
