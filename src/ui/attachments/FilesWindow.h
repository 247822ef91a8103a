#pragma once

#include "base/Event.h"
#include "ui/attachments/FilesView.h"

#include <functional>
#include <memory>
#include <optional>
#include <vector>

namespace ondrel::platform {
class Application;
class UserDefaults;
class Window;
} // namespace ondrel::platform

namespace ondrel::ui {

// The one window of all attachments, made anew each time it is opened.
class FilesWindow {
 public:
  // All outlive it.
  struct Services {
    platform::Application& application;
    platform::UserDefaults& defaults;
    const platform::TextFormatting& formatting;
    PreviewPanel& preview;
    platform::UriLauncher& launcher;
    // For a window, where the user sees how its downloads end.
    std::function<std::unique_ptr<attachments::FilesViewModel>(std::weak_ptr<platform::Window>)>
        makeViewModel;
  };

  explicit FilesWindow(Services services);
  FilesWindow(const FilesWindow&) = delete;
  FilesWindow& operator=(const FilesWindow&) = delete;

  // Opens it, or brings it to the front.
  void show();
  // Null while there is none.
  GtkWindow* native() const;

 private:
  void open();
  void forget();
  void keepFrame();

  const Services services_;
  const std::shared_ptr<DraggedCopies> dragged_ = std::make_shared<DraggedCopies>();
  // Of the open window; empty while there is none.
  std::shared_ptr<platform::Window> window_;
  std::optional<FilesView> view_;
  std::vector<base::Subscription> subscriptions_;
};

} // namespace ondrel::ui
