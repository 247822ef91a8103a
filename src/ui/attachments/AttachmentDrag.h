#pragma once

#include "async/Scope.h"
#include "attachments/FilesViewModel.h"
#include "platform/linux/glib/Connection.h"
#include "platform/linux/glib/Ref.h"
#include "ui/attachments/DraggedCopies.h"

#include <gtk/gtk.h>

#include <functional>
#include <memory>
#include <vector>

namespace ondrel::ui {

struct DraggedFile;

// Lets rows be dragged out as files. A file is fetched as soon as its drag begins, and who takes the drop
// waits for it. One that can't be fetched drops nothing; the model tells why.
class AttachmentDrag {
 public:
  // Null where nothing can be dragged, in the view's coordinates.
  using RowAt = std::function<const jmap::AttachmentInfo*(double x, double y)>;

  // The view and the model outlive it.
  AttachmentDrag(GtkWidget* view, attachments::FilesViewModel& viewModel,
                 std::shared_ptr<DraggedCopies> copies, RowAt rowAt);
  ~AttachmentDrag();
  AttachmentDrag(const AttachmentDrag&) = delete;
  AttachmentDrag& operator=(const AttachmentDrag&) = delete;

  // Fetches the file and gives a list with it when it is there.
  glib::Ref<GdkContentProvider> provider(const jmap::AttachmentInfo& attachment);

 private:
  void tellOfImpatience();

  GtkWidget* view_;
  attachments::FilesViewModel& viewModel_;
  const std::shared_ptr<DraggedCopies> copies_;
  glib::Ref<GtkEventController> source_;
  std::vector<std::weak_ptr<DraggedFile>> files_; // that somebody may wait for
  std::vector<glib::Connection> connections_;
  async::Scope scope_;
};

} // namespace ondrel::ui
