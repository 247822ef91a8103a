#include "web/PageMenu.h"

#include "base/Text.h"
#include "base/Url.h"
#include "platform/UriLauncher.h"
#include "platform/WebView.h"
#include "platform/WebViewDelegate.h"
#include "web/WebServices.h"
#include "web/WindowViewModel.h"
#include "web/page/ContextMenuRows.h"
#include "web/page/MailURL.h"
#include "web/page/NavigationDecision.h"

#include <utility>

namespace ondrel::web {

using platform::MenuAction;
using platform::Modifiers;

PageMenu::PageMenu(std::weak_ptr<WindowViewModel> viewModel, std::weak_ptr<platform::WebView> webView,
                   const WebServices& services, Follow follow)
    : viewModel_(std::move(viewModel)), webView_(std::move(webView)), services_(services),
      follow_(std::move(follow)) {
}

bool PageMenu::opens(const std::string& link) const {
  const auto scheme = base::lowercasedAscii(link.substr(0, link.find(':')));
  return (scheme == "mailto" && services_.beginLetter) ||
         services_.uriLauncher.defaultApplicationForScheme(scheme).has_value();
}

platform::ContextMenu PageMenu::rows(const platform::ContextHit& hit) const {
  const auto viewModel = viewModel_.lock();
  const auto webView = webView_.lock();
  if (!viewModel || !webView)
    return {};
  const auto link = base::Url::parse(hit.linkURL);
  MenuFacts facts;
  facts.pageURL = webView->url().value_or("");
  facts.isFile = link && isUserContent(*link, services_.settings);
  facts.hasApplication = !hit.linkURL.empty() && opens(hit.linkURL);
  facts.canHighlight =
      services_.highlightSelection && containsMail(facts.pageURL) && viewModel->showsService();
  facts.canGoBack = webView->canGoBack();
  facts.canGoForward = webView->canGoForward();
  facts.isWritingLetter = viewModel->isWritingLetter();
  return contextMenuRows(hit, facts);
}

void PageMenu::perform(MenuAction action, const platform::ContextHit& hit, std::uint64_t gesture) {
  const auto viewModel = viewModel_.lock();
  if (!viewModel)
    return;
  switch (action) {
  case MenuAction::openInTab:
    return click(hit.linkURL, Modifiers::command | Modifiers::shift, gesture);
  case MenuAction::openInBackgroundTab:
    return click(hit.linkURL, Modifiers::command, gesture);
  case MenuAction::openInWindow:
    return click(hit.linkURL, Modifiers::command | Modifiers::option | Modifiers::shift, gesture);
  case MenuAction::openElsewhere:
    return click(hit.linkURL, 0, gesture);
  case MenuAction::openInBrowser:
    if (isWebAddress(hit.linkURL))
      services_.uriLauncher.open(hit.linkURL);
    return;
  case MenuAction::highlight:
    if (services_.highlightSelection)
      services_.highlightSelection(viewModel);
    return;
  case MenuAction::goBack:
    return viewModel->goBack();
  case MenuAction::goForward:
    return viewModel->goForward();
  case MenuAction::reload:
    return viewModel->reload();
  default: // the web view's own
    return;
  }
}

void PageMenu::click(const std::string& link, unsigned modifiers, std::uint64_t gesture) {
  platform::NavigationAction action;
  action.type = platform::NavigationType::linkActivated;
  action.modifiers.flags = modifiers;
  action.url = link;
  action.gesture = gesture;
  action.isUserGesture = true;
  follow_(action);
}

} // namespace ondrel::web
