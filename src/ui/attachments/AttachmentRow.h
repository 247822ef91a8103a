#pragma once

#include "attachments/AttachmentCategory.h"
#include "platform/documents/DocumentDecoder.h"
#include "platform/linux/glib/Connection.h"
#include "platform/linux/glib/Ref.h"

#include <gtk/gtk.h>

#include <functional>
#include <optional>

namespace ondrel::ui {

struct AttachmentTexts;

// The face of one row, which shows one attachment after the other as the list moves. None of its parts
// changes its size with what it shows, so that showing something else lays out nothing anew.
class AttachmentRow {
 public:
  using ShowMenu = std::function<void()>;

  // There is room for dates of so many characters.
  AttachmentRow(int dateCharacters, ShowMenu showMenu);

  GtkWidget* widget() const { return row_.get(); } // takes the keyboard
  GtkWidget* menuButton() const { return more_; }

  void show(const AttachmentTexts& texts, attachments::AttachmentCategory category);
  void setThumbnail(const platform::PicturePointer& thumbnail); // null for the category's symbol
  void setBusy(bool isBusy);
  void setSelected(bool isSelected);

 private:
  GtkWidget* makeThumbnail();
  GtkWidget* makeTexts();
  GtkWidget* makeEnd(int characters);
  void showSymbol(const char* icon);

  const glib::Ref<GtkWidget> row_;
  GtkImage* symbol_ = nullptr;
  GtkPicture* picture_ = nullptr;
  GtkInscription* name_ = nullptr;
  GtkInscription* message_ = nullptr;
  GtkInscription* date_ = nullptr;
  GtkInscription* size_ = nullptr;
  GtkWidget* more_ = nullptr;
  GtkWidget* spinner_ = nullptr; // null while nothing is done with it
  const char* shownSymbol_ = nullptr;
  attachments::AttachmentCategory category_{};
  glib::Connection clicked_;
};

} // namespace ondrel::ui
