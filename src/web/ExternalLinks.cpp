#include "web/ExternalLinks.h"

#include "base/Text.h"
#include "base/Url.h"
#include "platform/UriLauncher.h"
#include "platform/WebViewDelegate.h"
#include "web/WebServices.h"
#include "web/WindowViewModel.h"
#include "web/page/GestureLimit.h"
#include "web/page/NavigationRules.h"

#include <utility>

namespace ondrel::web {

std::optional<std::string> externalAddress(const std::string& url) {
  // Behind a scheme that engines don't know they leave these as they are ("tel:+49 30 1234").
  const auto parsed = base::Url::parse(base::withEncodedDelimiters(url));
  if (!parsed || !parsed->scheme() ||
      addressUse(parsed->absoluteString(), TargetFrame::unknown) != AddressUse::handToDesktop)
    return std::nullopt;
  return parsed->absoluteString();
}

ExternalLinks::ExternalLinks(std::weak_ptr<WindowViewModel> viewModel, const WebServices& services,
                             GestureLimit& handOvers)
    : viewModel_(std::move(viewModel)), services_(services), handOvers_(handOvers) {
}

bool ExternalLinks::take(const platform::NavigationAction& action) {
  const auto url = action.url ? externalAddress(*action.url) : std::nullopt;
  if (!url)
    return false;
  if (!action.isUserGesture || !handOvers_.take(action.gesture))
    logger_.debug("A link to another program was not opened: no click of its own");
  else
    open(*url);
  return true;
}

// The one place where they leave.
void ExternalLinks::open(const std::string& url) {
  const auto scheme = base::lowercasedAscii(base::Url::parse(url)->scheme().value());
  if (url.starts_with("mailto:") && services_.beginLetter && services_.beginLetter(url))
    return;
  const auto viewModel = viewModel_.lock();
  if (services_.uriLauncher.defaultApplicationForScheme(scheme))
    services_.uriLauncher.open(url);
  else if (viewModel)
    viewModel->pageProblem.set({PageProblem::Kind::noApplication, {}, url});
}

} // namespace ondrel::web
