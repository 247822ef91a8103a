#include "web/page/NavigationDecision.h"

#include "base/Text.h"
#include "base/Url.h"
#include "platform/WebViewDelegate.h"
#include "settings/AppSettings.h"
#include "web/page/MailURL.h"
#include "web/page/NavigationRules.h"

namespace ondrel::web {

using platform::Modifiers;
using platform::NavigationType;

namespace {

std::string withoutFragment(const std::string& url) {
  return url.substr(0, url.find('#'));
}

} // namespace

bool isWebAddress(const std::string& address) {
  const auto url = base::Url::parse(address);
  return url && url->isWeb();
}

bool isUserContent(const base::Url& url, const settings::AppSettings& settings) {
  const auto& suffix = settings.site().userContentDomainSuffix;
  return !suffix.empty() && url.host() &&
         (url.host()->ends_with(suffix) || url.hostWithPort().ends_with(suffix));
}

NavigationUse placeOf(const base::Url& url, const settings::AppSettings& settings) {
  if (isUserContent(url, settings))
    return NavigationUse::desktop;
  if (containsMail(url.absoluteString()) && settings.isServiceOrigin(url.absoluteString()))
    return NavigationUse::window;
  const bool sameOrigin = *url.scheme() + "://" + url.hostWithPort() + "/" == settings.baseURL();
  return sameOrigin ? NavigationUse::tab : NavigationUse::desktop;
}

NavigationDecision decideNavigation(const platform::NavigationAction& action, const PageAtNavigation& page) {
  const auto& modifiers = action.modifiers;
  const bool isLink = action.type == NavigationType::linkActivated && action.url && isWebAddress(*action.url);
  if (isLink && modifiers.contains(Modifiers::command))
    return {modifiers.contains(Modifiers::option) ? NavigationUse::window : NavigationUse::tab,
            modifiers.contains(Modifiers::shift)};
  if (action.shouldPerformDownload)
    return {NavigationUse::download};
  if (action.url && addressUse(*action.url, TargetFrame::unknown) == AddressUse::cancel)
    return {NavigationUse::cancel};
  // A link of the page leads it, or a frame in it, away from a letter. What the application does by itself
  // goes on: it knows about its letters.
  if (isLink && page.isWritingLetter && withoutFragment(*action.url) != withoutFragment(page.url))
    return {placeOf(*base::Url::parse(*action.url), page.settings), true};
  return {NavigationUse::allow};
}

NavigationUse decideResponse(const platform::NavigationResponse& response) {
  const bool isAttachment = response.isHttp && response.contentDisposition &&
                            base::lowercasedAscii(*response.contentDisposition).starts_with("attachment");
  if (isAttachment || !response.canShowMimeType)
    return NavigationUse::download;
  if (response.isMainFrame && addressUse(response.url, TargetFrame::main) != AddressUse::stay)
    return NavigationUse::cancel;
  return NavigationUse::allow;
}

} // namespace ondrel::web
