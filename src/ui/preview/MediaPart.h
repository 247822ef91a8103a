#pragma once

#include "platform/linux/glib/Connection.h"
#include "ui/preview/PreviewPart.h"

#include <functional>
#include <memory>
#include <string>

namespace ondrel::ui {

// Whether the toolkit can play sound and film on this machine.
bool canPlayMedia();

// Plays a sound or a film. Made when the user has asked for it to be played: unlike images, these are decoded
// in this process. Whatever a file names as its source, nothing is loaded from elsewhere.
class MediaPart final : public PreviewPart {
 public:
  // `failed` is told what the user is to know.
  MediaPart(const std::string& path, const std::string& label, std::function<void()> failed);
  ~MediaPart() override;
  MediaPart(const MediaPart&) = delete;
  MediaPart& operator=(const MediaPart&) = delete;

  GtkWidget* widget() const override { return video_.get(); }

 private:
  glib::Ref<GtkMediaStream> stream_;
  glib::Ref<GtkWidget> video_;
  glib::Connection error_;
};

} // namespace ondrel::ui
