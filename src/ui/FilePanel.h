#pragma once

#include "ui/attachments/FilePreview.h"
#include "ui/preview/PreviewWindow.h"

#include <functional>
#include <utility>

namespace ondrel::ui {

// The preview window as the window of all attachments uses it.
class FilePanel final : public PreviewPanel {
 public:
  // `parent` gives the window that it belongs to, or null.
  FilePanel(PreviewWindow::Services services, std::function<GtkWindow*()> parent)
      : window_(services), parent_(std::move(parent)) {}

  void show(const File& file, std::function<void(int step)> neighbour) override {
    window_.show({file.path, file.name, file.mimeType}, parent_(), std::move(neighbour));
  }
  void showLoading(const std::string& name) override { window_.showLoading(name); }
  void showError(const std::string& text) override { window_.showError(text); }
  void setNeighbours(Neighbours neighbours) override {
    window_.setNeighbours(neighbours.previous, neighbours.next);
  }
  bool isOpen() const override { return window_.isOpen(); }
  void close() override { window_.close(); }

 private:
  PreviewWindow window_;
  const std::function<GtkWindow*()> parent_;
  const base::Subscription closes_ = window_.closed.subscribe([this] { closed.emit(); });
};

} // namespace ondrel::ui
