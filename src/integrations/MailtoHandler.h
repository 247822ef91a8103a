#pragma once

#include "async/EventLoop.h"
#include "base/Log.h"

#include <memory>
#include <optional>
#include <string>

namespace ondrel::app {
class WindowManager;
}

namespace ondrel::base {
class Url;
}

namespace ondrel::platform {
class Application;
class Clipboard;
} // namespace ondrel::platform

namespace ondrel::settings {
class AppSettings;
}

namespace ondrel::web {
class WindowViewModel;
}

namespace ondrel::integrations {

// Has the web application write the letters that "mailto" URLs ask for. Main thread only.
class MailtoHandler {
 public:
  // All outlive it.
  MailtoHandler(platform::Application& application, app::WindowManager& windowManager,
                const settings::AppSettings& settings, platform::Clipboard& clipboard);

  // Shows the editor in the active window where no letter is being written, in a new one when there is none.
  // Of several URLs at once the first is shown, and the others wait in tabs behind. URLs of other schemes are
  // left alone.
  void handle(const base::Url& url);

 private:
  std::shared_ptr<web::WindowViewModel> show(const std::string& address, const std::string& title);
  void tellOfCut(web::WindowViewModel& tab, std::string whole);

  platform::Application& application_;
  app::WindowManager& windowManager_;
  const settings::AppSettings& settings_;
  platform::Clipboard& clipboard_;
  std::optional<async::TimePoint> last_; // when it was asked for one
  const base::Logger logger_{"network"};
};

} // namespace ondrel::integrations
