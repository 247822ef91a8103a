#pragma once

#include "attachments/FilesViewModel.h"
#include "platform/linux/text/IcuTextFormatting.h"
#include "support/FakeDesktop.h"
#include "ui/attachments/FilesView.h"

#include <gtk/gtk.h>

#include <functional>
#include <memory>
#include <string>
#include <utility>

namespace ondrel::bench {

// The window of all attachments, on stand-ins for what has no part in a measurement.
struct AttachmentWindow {
  explicit AttachmentWindow(std::unique_ptr<attachments::FilesViewModel> viewModel);
  GtkWidget* find(GtkWidget* widget, const std::string& name) {
    if (name == gtk_widget_get_name(widget))
      return widget;
    for (auto* child = gtk_widget_get_first_child(widget); child; child = gtk_widget_get_next_sibling(child))
      if (auto* found = find(child, name))
        return found;
    return nullptr;
  }

  struct NoPanel final : ui::PreviewPanel {
    void show(const File&, std::function<void(int)>) override {}
    void showLoading(const std::string&) override {}
    void showError(const std::string&) override {}
    void setNeighbours(Neighbours) override {}
    bool isOpen() const override { return false; }
    void close() override {}
  };
  NoPanel panel;
  support::FakeUriLauncher launcher;
  platform::text::IcuTextFormatting formatting;
  ui::FilesView view;
  GtkWindow* window;
};

inline AttachmentWindow::AttachmentWindow(std::unique_ptr<attachments::FilesViewModel> viewModel)
    : view(std::move(viewModel),
           {.formatting = formatting, .preview = panel, .launcher = launcher, .close = [] {}}),
      window(GTK_WINDOW(gtk_window_new())) {
  gtk_window_set_default_size(window, 760, 680);
  gtk_window_set_child(window, view.widget());
  gtk_window_present(window);
}

} // namespace ondrel::bench
