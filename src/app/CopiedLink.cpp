#include "app/CopiedLink.h"

#include "base/Url.h"
#include "platform/Clipboard.h"
#include "settings/AppSettings.h"

namespace ondrel::app {

async::Task<void> CopiedLink::read() {
  const auto text = co_await clipboard_.readString();
  const auto prefix = settings_.webAppBaseURL(settings::FastmailEnvironment::production) + "mail/";
  const bool isMessage = text && text->starts_with(prefix) && base::Url::parse(*text);
  url.set(isMessage ? text : std::nullopt);
}

} // namespace ondrel::app
