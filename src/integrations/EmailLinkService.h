#pragma once

#include "async/Scope.h"
#include "base/Log.h"

#include <optional>
#include <string>

namespace ondrel::app {
class WindowManager;
}

namespace ondrel::platform {
class Application;
}

namespace ondrel::web {
struct WebServices;
}

namespace ondrel::integrations {

// Brings single messages of the service up in a window. Main thread only.
class EmailLinkService {
 public:
  EmailLinkService(platform::Application& application, app::WindowManager& windowManager,
                   const web::WebServices& webServices);

  // Shows a message's address in the active window, or in a new one. With an email id the page is made to
  // open that message, which loading the address alone doesn't do reliably.
  void navigate(const std::string& url, const std::optional<std::string>& emailId = {});

 private:
  platform::Application& application_;
  app::WindowManager& windowManager_;
  const web::WebServices& webServices_;
  const base::Logger logger_{"system"};
  async::Scope scope_;
};

} // namespace ondrel::integrations
