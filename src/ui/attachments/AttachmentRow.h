#pragma once

#include "attachments/AttachmentCategory.h"
#include "platform/documents/DocumentDecoder.h"
#include "platform/linux/glib/Connection.h"
#include "platform/linux/glib/Ref.h"

#include <gtk/gtk.h>

#include <functional>
#include <string>

namespace ondrel::ui {

struct AttachmentTexts;

// The face of one row. The toolkit keeps some two hundred around the visible ones and gives them other
// attachments as the list moves, so a row is an empty place of the right height until it comes in sight.
class AttachmentRow {
 public:
  using ShowMenu = std::function<void(AttachmentRow& row)>;

  AttachmentRow(int height, ShowMenu showMenu);

  GtkWidget* widget() const { return place_.get(); }
  // Null before the row has been in sight.
  GtkWidget* menuButton() const { return more_; }

  void show(const AttachmentTexts& texts, attachments::AttachmentCategory category);
  void setThumbnail(const platform::PicturePointer& thumbnail); // null for the category's symbol
  void setBusy(bool isBusy);

  // What a row takes, in pixels, with the user's font.
  static int naturalHeight();

 private:
  void build();
  GtkWidget* makeThumbnail();
  GtkWidget* makeTexts();
  GtkWidget* makeEnd();

  const ShowMenu showMenu_;
  const glib::Ref<GtkWidget> place_;
  GtkWidget* symbol_ = nullptr; // null before it is built, as all of these
  GtkPicture* picture_ = nullptr;
  GtkInscription* name_ = nullptr;
  GtkInscription* message_ = nullptr;
  GtkWidget* date_ = nullptr;
  GtkWidget* size_ = nullptr;
  GtkWidget* more_ = nullptr;
  GtkWidget* spinner_ = nullptr;
  attachments::AttachmentCategory category_{};
  glib::Connection clicked_;
};

} // namespace ondrel::ui
