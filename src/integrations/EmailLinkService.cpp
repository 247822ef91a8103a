#include "integrations/EmailLinkService.h"

#include "app/WindowManager.h"
#include "jmap/MessageURL.h"
#include "platform/Application.h"
#include "web/RowSelector.h"
#include "web/WindowViewModel.h"

namespace ondrel::integrations {

EmailLinkService::EmailLinkService(platform::Application& application, app::WindowManager& windowManager,
                                   const web::WebServices& webServices)
    : application_(application), windowManager_(windowManager), webServices_(webServices) {
}

void EmailLinkService::navigate(const std::string& url, const std::optional<std::string>& emailId) {
  application_.activate();
  const auto shown = windowManager_.loadInActiveWindow(url);
  if (!shown) {
    windowManager_.openURL(url);
  } else if (emailId) {
    const auto address = jmap::MessageAddress::of(url);
    scope_.spawn(web::selectRow(*emailId, address ? address->threadId : "", shown, webServices_));
  }
  logger_.info("Navigated to FastMail URL: {}", url);
}

} // namespace ondrel::integrations
