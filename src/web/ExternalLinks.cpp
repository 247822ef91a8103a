#include "web/ExternalLinks.h"

#include "base/Text.h"
#include "base/Url.h"
#include "platform/UriLauncher.h"
#include "platform/WebViewDelegate.h"
#include "web/GestureLimit.h"
#include "web/NavigationRules.h"
#include "web/WindowViewModel.h"

#include <utility>

namespace ondrel::web {

namespace {

// Behind a scheme that engines don't know they leave these as they are ("tel:+49 30 1234").
std::string encoded(const std::string& url) {
  std::string result;
  for (const char c : url)
    switch (c) {
    case ' ':
      result += "%20";
      break;
    case '"':
      result += "%22";
      break;
    case '<':
      result += "%3C";
      break;
    case '>':
      result += "%3E";
      break;
    default:
      result += c;
    }
  return result;
}

} // namespace

std::optional<std::string> externalAddress(const std::string& url) {
  const auto parsed = base::Url::parse(encoded(url));
  if (!parsed || !parsed->scheme() ||
      addressUse(parsed->absoluteString(), TargetFrame::unknown) != AddressUse::handToDesktop)
    return std::nullopt;
  return parsed->absoluteString();
}

ExternalLinks::ExternalLinks(std::weak_ptr<WindowViewModel> viewModel, platform::UriLauncher& uriLauncher,
                             GestureLimit& handOvers)
    : viewModel_(std::move(viewModel)), uriLauncher_(uriLauncher), handOvers_(handOvers) {
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

// The one place where they leave: "mailto:" too, which may come back to this program from the desktop.
void ExternalLinks::open(const std::string& url) {
  const auto scheme = base::Url::parse(url)->scheme().value();
  const auto viewModel = viewModel_.lock();
  if (uriLauncher_.defaultApplicationForScheme(base::lowercasedAscii(scheme)))
    uriLauncher_.open(url);
  else if (viewModel)
    viewModel->pageProblem.set({PageProblem::Kind::noApplication, {}, url});
}

} // namespace ondrel::web
