#include "integrations/MailtoHandler.h"

#include "app/WindowManager.h"
#include "base/Text.h"
#include "base/Translation.h"
#include "base/Url.h"
#include "integrations/MailtoDraft.h"
#include "platform/Application.h"
#include "platform/Clipboard.h"
#include "settings/AppSettings.h"
#include "web/WindowViewModel.h"

#include <chrono>
#include <utility>

namespace ondrel::integrations {

namespace {

// Bytes: what every server is asked to take (RFC 9110, section 4.1). One that takes less or more answers a
// longer address with an error page, and the letter would be lost.
constexpr std::size_t longestComposeURL = 8000;
constexpr std::size_t longestLoggedText = 200;
constexpr std::chrono::seconds timeToCopy{60};
constexpr std::chrono::milliseconds atOnce{500};

std::string forLog(const std::string& text) {
  return base::displayLine(text.substr(0, longestLoggedText));
}

} // namespace

MailtoHandler::MailtoHandler(platform::Application& application, app::WindowManager& windowManager,
                             const settings::AppSettings& settings, platform::Clipboard& clipboard)
    : application_(application), windowManager_(windowManager), settings_(settings), clipboard_(clipboard) {
}

void MailtoHandler::handle(const base::Url& url) {
  if (url.scheme() != "mailto")
    return;
  MailtoDraft draft(url.absoluteString());
  logger_.info("mailto received — to: {}, subject: {}", forLog(draft.to), forLog(draft.subject.value_or("")));
  windowManager_.restoreSession(); // its account is that of the letter
  application_.activate();
  // The editor is always that of the production environment.
  const auto& base = settings_.site().webAppBaseURL.production;
  const auto account = windowManager_.windows().currentAccountParameter();
  const auto fixedSize = composeURL(base, {}, account).size();
  auto cut = draft.shortenTo(longestComposeURL - std::min(longestComposeURL, fixedSize));
  const auto address = composeURL(base, draft, account);
  const auto tab = show(address, draft.subject.value_or(draft.to));
  if (!cut.empty())
    tellOfCut(*tab, std::move(cut));
}

std::shared_ptr<web::WindowViewModel> MailtoHandler::show(const std::string& address,
                                                          const std::string& title) {
  const auto now = async::EventLoop::current().now();
  const auto before = std::exchange(last_, now);
  // Each editor is a process of the engine, and whoever opens many looks at one.
  if (before && now - *before < atOnce)
    if (auto behind = windowManager_.addresses().openTabBehind(address)) {
      if (!title.empty())
        behind->title.set(title);
      return behind;
    }
  auto tab = windowManager_.addresses().loadInActiveWindow(address);
  return tab ? tab : windowManager_.addresses().openInNewTabOrWindow(address);
}

void MailtoHandler::tellOfCut(web::WindowViewModel& tab, std::string whole) {
  logger_.notice("mailto: the letter is too long for an address, and was cut");
  tab.tell({.text = base::tr("The link is too long for a letter: some of it is missing here."),
            .button = base::tr("Copy All"),
            .act = [&clipboard = clipboard_, text = std::move(whole)] { clipboard.writeString(text); },
            .time = timeToCopy});
}

} // namespace ondrel::integrations
