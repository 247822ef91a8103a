#pragma once

#include <functional>
#include <memory>

namespace ondrel::platform {
class Window;
}

namespace ondrel::web {
class WindowViewModel;
}

namespace ondrel::app {

// What a browser window shows, made by `ui/`. Its destruction takes the tab's web view apart.
class BrowserContent {
 public:
  virtual ~BrowserContent() = default;
};

// Fills a window that has just been made with the view on its model.
using BrowserContentFactory = std::function<std::unique_ptr<BrowserContent>(
    std::shared_ptr<web::WindowViewModel>, std::shared_ptr<platform::Window>)>;

} // namespace ondrel::app
