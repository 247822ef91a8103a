#pragma once

#include "attachments/FilesViewModel.h"
#include "platform/linux/glib/Connection.h"
#include "platform/linux/glib/Ref.h"

#include <gtk/gtk.h>

#include <functional>
#include <optional>
#include <vector>

namespace ondrel::ui {

// The four actions of a row, in one menu for all rows.
class AttachmentMenu {
 public:
  struct Actions {
    using Action = std::function<void(const jmap::AttachmentInfo&)>;
    Action showEmail;
    Action download;
    Action print;
    Action preview;
  };

  // `parent` has a layout of its own and is around all rows; it keeps the menu.
  AttachmentMenu(GtkWidget* parent, const attachments::FilesViewModel& files, Actions actions);
  ~AttachmentMenu();
  AttachmentMenu(const AttachmentMenu&) = delete;
  AttachmentMenu& operator=(const AttachmentMenu&) = delete;

  // Points to a place in the parent's coordinates. The keyboard goes back to where it was.
  void show(const jmap::AttachmentInfo& attachment, const GdkRectangle& at);

 private:
  void add(const char* name, const char* title, Actions::Action action);

  const attachments::FilesViewModel& files_;
  GtkWidget* parent_;
  glib::Ref<GMenu> menu_;
  glib::Ref<GSimpleActionGroup> group_;
  GtkWidget* popover_;
  glib::WeakRef<GtkWidget> focus_;                 // where the keyboard was
  std::optional<jmap::AttachmentInfo> attachment_; // that it was opened for
  std::vector<glib::Connection> connections_;
};

} // namespace ondrel::ui
