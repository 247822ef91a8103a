#pragma once

#include "async/Timer.h"
#include "attachments/FilesViewModel.h"
#include "platform/linux/glib/Connection.h"
#include "platform/linux/glib/Ref.h"
#include "ui/attachments/AttachmentListModel.h"
#include "ui/attachments/AttachmentRow.h"

#include <gtk/gtk.h>

#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace ondrel::platform {
class TextFormatting;
}

namespace ondrel::ui {

// The rows of the window in a list that scrolls. Fills those that are in sight and no others.
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

  // The files, the formatting and the model outlive it. `foot` is shown below the rows.
  AttachmentList(attachments::FilesViewModel& files, const platform::TextFormatting& formatting,
                 AttachmentListModel& model, GtkWidget* foot, Events events);
  ~AttachmentList();
  AttachmentList(const AttachmentList&) = delete;
  AttachmentList& operator=(const AttachmentList&) = delete;

  GtkWidget* widget() const { return scrolled_; } // floating
  GtkWidget* view() const { return view_; }

  // The row at that place of the view; null where there is none.
  const jmap::AttachmentInfo* rowAt(double x, double y) const;
  // Of the row at that height of the view.
  std::size_t positionAt(double y) const;
  bool isFootInSight() const { return isFootInSight_; }
  // Brings a row into sight and, where the list has the keyboard, to it.
  void reveal(std::size_t position, bool takeFocus);
  // Where rows that have just come have their places.
  void scrollToTop();
  std::optional<Place> place() const; // absent at the top
  // The place, from which the list goes to its top.
  std::optional<Place> leavePlace();
  // Where it is now; false when the row isn't listed, or not yet.
  bool goTo(const Place& place);
  void showMenu(std::size_t position);

 private:
  struct Slot;

  void setUp(GtkListItem* item);
  void bind(GtkListItem* item);
  void releaseFoot();
  void lookSoon();
  void moveSoon(Place to);
  void move();
  void look();
  void fill(Slot& slot);
  void leave(Slot& slot);
  void loadThumbnails();
  void showMenu(Slot& slot);
  double rowHeight() const;
  std::vector<Slot*> filled(const std::function<bool(const jmap::AttachmentInfo&)>& matches);

  attachments::FilesViewModel& files_;
  const platform::TextFormatting& formatting_;
  AttachmentListModel& model_;
  const glib::Ref<GtkWidget> foot_;
  const Events events_;
  int height_;
  GtkWidget* view_;
  GtkWidget* scrolled_;
  GtkAdjustment* scroll_;
  std::map<GtkListItem*, std::unique_ptr<Slot>> slots_;
  GtkListItem* footItem_ = nullptr; // where the foot is; null while it is far away
  bool isFootInSight_ = false;
  std::optional<Place> moving_; // where the list goes soon
  int framesToMove_ = 0;
  guint tick_ = 0; // 0 while no look is due
  async::Timer rest_;
  std::vector<base::Subscription> subscriptions_;
  std::vector<glib::Connection> connections_;
};

} // namespace ondrel::ui
