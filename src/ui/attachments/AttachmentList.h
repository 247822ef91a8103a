#pragma once

#include "async/Timer.h"
#include "attachments/FilesViewModel.h"
#include "platform/linux/glib/Connection.h"
#include "platform/linux/glib/Ref.h"
#include "ui/attachments/AttachmentSelection.h"

#include <gtk/gtk.h>

#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace ondrel::platform {
class TextFormatting;
}

namespace ondrel::ui {

// The rows of the window in a list that scrolls, and the foot below them. All rows are of one height, so that
// a row's place follows from its number; only those in sight are widgets, however many there are.
class AttachmentList {
 public:
  struct Events {
    // Of a row, at a place in the coordinates of widget().
    std::function<void(const jmap::AttachmentInfo&, const GdkRectangle&)> menuAsked;
    std::function<void(const jmap::AttachmentInfo&)> doubleClicked;
    std::function<void()> endReached; // the foot is in sight; comes again and again
  };
  // Where the user is: the row at the upper edge, and how far it is scrolled out.
  struct Place {
    std::string id;
    std::size_t position = 0;
    double offset = 0; // pixels
  };

  // The files, the formatting and the selection outlive it. `foot` is shown below the rows.
  AttachmentList(attachments::FilesViewModel& files, const platform::TextFormatting& formatting,
                 AttachmentSelection& selection, GtkWidget* foot, Events events);
  ~AttachmentList();
  AttachmentList(const AttachmentList&) = delete;
  AttachmentList& operator=(const AttachmentList&) = delete;

  GtkWidget* widget() const { return scrolled_; } // floating
  GtkWidget* view() const { return view_.get(); } // rows that have the keyboard are children of it

  // At that height of the view; none below the last row.
  std::optional<std::size_t> positionAt(double y) const;
  void setHasFoot(bool hasFoot);
  bool isFootInSight() const { return isFootInSight_; }
  // Brings a row into sight and, if that is wanted, the keyboard to it.
  void reveal(std::size_t position, bool takeFocus);
  void scrollToTop();
  std::optional<Place> place() const; // absent at the top
  // The place, from which the list goes to its top.
  std::optional<Place> leavePlace();
  // Where its row is now; false when that isn't listed. As long as too few rows are below it, it can be no
  // more than in sight: that is false too, unless it is near enough.
  bool goTo(const Place& place, bool isNearEnough);
  void showMenu(std::size_t position);

 private:
  struct Slot;

  void addController();
  void follow();
  void allocate(int width, int height);
  int width() const;
  void adjustRange();
  void rowsChanged(const attachments::FilesViewModel::RowsChange& change);
  void lookSoon();
  void look();
  void rest();
  Slot& freeSlot();
  void fill(Slot& slot, std::size_t position);
  void leave(Slot& slot);
  std::optional<std::size_t> focusedPosition() const;
  bool moveFocus(GtkDirectionType direction);
  bool focusRow();
  void takeBackFocus();
  bool focusFoot(GtkDirectionType direction);
  bool handleKey(guint key);
  Slot* slotAt(std::size_t position) const;
  const jmap::AttachmentInfo& attachment(const Slot& slot) const;

  attachments::FilesViewModel& files_;
  const platform::TextFormatting& formatting_;
  AttachmentSelection& selection_;
  const Events events_;
  const int dateCharacters_;
  const glib::Ref<GtkWidget> view_;
  GtkWidget* scrolled_;
  GtkAdjustment* scroll_;
  GtkWidget* foot_;
  std::vector<std::unique_ptr<Slot>> slots_; // one at least
  int height_ = 1;                           // of a row, and all of these in pixels
  int footHeight_ = 0;
  int page_ = 0; // 0: not on the screen yet
  bool hasFoot_ = false;
  bool isAllocating_ = false;
  bool isFootInSight_ = false;
  bool hasLostFocus_ = false;            // the row that had the keyboard has gone
  std::optional<GtkWidget*> focusSince_; // what the toolkit has given it to then; perhaps gone
  guint tick_ = 0;                       // 0 while no look is due
  async::Timer rest_;
  async::Timer loss_;
  std::vector<base::Subscription> subscriptions_;
  std::vector<glib::Connection> connections_;
};

} // namespace ondrel::ui
