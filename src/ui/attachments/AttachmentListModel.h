#pragma once

#include "attachments/FilesViewModel.h"
#include "base/Event.h"
#include "platform/linux/glib/Ref.h"

#include <gtk/gtk.h>

#include <cstddef>
#include <memory>
#include <optional>
#include <string>
#include <unordered_map>
#include <vector>

namespace ondrel::ui {

// What stands in a place of the toolkit's list: an attachment, or null for the foot below all of them.
const jmap::AttachmentInfo* attachmentOf(gpointer item);

// The filtered rows as the toolkit's lists take them, however many there are: an object is made for a row
// only when it is asked for, and is the same one while somebody holds it. One row is selected, by its id,
// which stays so while the row is filtered out. Behind the last row comes the foot, if there is
// a row: the toolkit holds on to what it shows, so that it would show the foot when rows come before it.
class AttachmentListModel {
 public:
  explicit AttachmentListModel(attachments::FilesViewModel& files); // outlives it
  ~AttachmentListModel();
  AttachmentListModel(const AttachmentListModel&) = delete;
  AttachmentListModel& operator=(const AttachmentListModel&) = delete;

  GtkSelectionModel* native() const { return native_.get(); } // borrowed

  const std::optional<std::string>& selectedId() const { return selectedId_; }
  // Where the selected row is among those that are listed.
  std::optional<std::size_t> selectedPosition() const { return positionOf(selectedId_, selectedHint_); }
  const jmap::AttachmentInfo* selected() const;
  void select(std::size_t position);

  // Whether there is something to say below the rows.
  void setHasFoot(bool hasFoot);

  std::optional<std::size_t> positionOf(const std::optional<std::string>& id, std::size_t hint) const;

  // Of the toolkit's list, which asks in the middle of a change too.
  guint itemCount() const;
  gpointer item(guint position); // a new reference
  bool isSelected(guint position) const;

 private:
  using Live = std::unordered_map<std::string, gpointer>; // by id, of the objects that somebody holds

  void changed(const attachments::FilesViewModel::RowsChange& change);
  // The row of a place in the list; the count of rows for the foot.
  std::size_t rowAt(guint position) const;

  attachments::FilesViewModel& files_;
  glib::Ref<GtkSelectionModel> native_;
  glib::Ref<GObject> foot_;
  bool hasFoot_ = true;
  std::shared_ptr<Live> live_ = std::make_shared<Live>();
  std::optional<std::string> selectedId_;
  std::size_t selectedHint_ = 0; // where it was last
  // Rows that the toolkit has not heard of yet.
  struct Unheard {
    std::size_t position = 0;
    std::size_t count = 0;
  } unheard_;
  base::Subscription rowsChanged_;
};

} // namespace ondrel::ui
