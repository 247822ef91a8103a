#pragma once

#include "platform/linux/glib/Connection.h"
#include "ui/preview/FileCard.h"
#include "ui/preview/PreviewPart.h"

#include <functional>
#include <optional>
#include <string>

namespace ondrel::ui {

// Whether the toolkit can play sound and film on this machine.
bool canPlayMedia();

// Plays a sound or a film. Made when the user has asked for it to be played: unlike images, these are decoded
// in this process. Whatever a file names as its source, nothing is loaded from elsewhere.
class MediaPart final : public PreviewPart {
 public:
  // The card shows a sound, which has nothing to be seen, with controls.
  MediaPart(const FileCard::Options& card, std::function<void()> failed);
  ~MediaPart() override;
  MediaPart(const MediaPart&) = delete;
  MediaPart& operator=(const MediaPart&) = delete;

  GtkWidget* widget() const override { return place_.get(); }
  GtkWidget* focus() const override { return card_ ? card_->focus() : video_; }

 private:
  void showSound(FileCard::Options card);

  glib::Ref<GtkMediaStream> stream_;
  glib::Ref<GtkWidget> place_; // of the film, or of the card
  GtkWidget* video_;           // gone where there is a card
  std::optional<FileCard> card_;
  glib::Connection prepared_;
  glib::Connection error_;
};

} // namespace ondrel::ui
