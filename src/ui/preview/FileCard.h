#pragma once

#include "platform/linux/glib/Connection.h"
#include "ui/preview/PreviewPart.h"

#include <functional>
#include <string>

namespace ondrel::ui {

// What is known of a file that has no picture: its icon, name, type and size, and what can be done with it.
class FileCard final : public PreviewPart {
 public:
  struct Options {
    std::string path;
    std::string name; // as it is shown
    std::string mimeType;
    std::string note{};           // why there is no more to see; empty for nothing
    const char* action = nullptr; // null for no button
    std::function<void()> act{};
    GtkWidget* controls = nullptr; // in the button's place, for the card to own
  };
  explicit FileCard(const Options& options);

  GtkWidget* widget() const override { return widget_.get(); }
  GtkWidget* focus() const override { return card_; }

 private:
  void addButton(const Options& options);

  glib::Ref<GtkWidget> widget_;
  GtkWidget* card_;
  glib::Connection clicked_;
};

} // namespace ondrel::ui
