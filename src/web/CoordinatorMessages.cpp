#include "web/Coordinator.h"

#include "base/Url.h"
#include "jmap/NotificationManager.h"
#include "platform/Application.h"
#include "platform/WebView.h"
#include "platform/Window.h"
#include "settings/AppSettings.h"
#include "web/WebServices.h"
#include "web/WebViewConfiguration.h"
#include "web/WindowViewModel.h"

#include <algorithm>

namespace ondrel::web {

struct Coordinator::Route {
  std::string_view type;
  Trust trust;
  void (Coordinator::*handle)(const ScriptMessageFields&, const Message&);
};

const Coordinator::Route Coordinator::routes[] = {
    {"titleChange", Trust::mainFrameOrService, &Coordinator::titleChange},
    {"mouseover", Trust::mainFrameOrService, &Coordinator::mouseover},
    {"print", Trust::mainFrameOrService, &Coordinator::print},
    {"composeReady", Trust::serviceOnly, &Coordinator::composeReady},
    {"compose", Trust::serviceOnly, &Coordinator::compose},
    {"sendClicked", Trust::serviceOnly, &Coordinator::sendClicked},
    {"discardClicked", Trust::serviceOnly, &Coordinator::discardClicked},
    {"discardUndone", Trust::serviceOnly, &Coordinator::discardUndone},
    {"ondrelWritingChanged", Trust::serviceOnly, &Coordinator::writingChanged},
    {"consoleLog", Trust::anyFrame, &Coordinator::consoleLog},
    {"ondrelFilesAutoShare", Trust::serviceOnly, &Coordinator::filesAutoShare},
};

void Coordinator::didReceiveScriptMessage(const platform::ScriptMessage& message) {
  if (message.name != scriptMessageHandlerName) {
    forward(message);
    return;
  }
  const auto fields = ScriptMessageFields::from(message.body);
  const auto* type = fields ? fields->find("type") : nullptr;
  const auto* own = type ? std::ranges::find(routes, *type, &Route::type) : std::end(routes);
  const auto features = type ? services_.messages.find(*type) : nullptr;
  if (own == std::end(routes) && !features) {
    forward(message);
    return;
  }
  if (!isTrusted(features ? features->trust : own->trust, message.frame, services_.settings)) {
    scriptLogger_.debug("A message of type {} from a frame of {} was dropped", *type, message.frame.origin);
    return;
  }
  if (!features)
    (this->*own->handle)(*fields, message);
  else if (const auto viewModel = viewModel_.lock())
    features->handle({viewModel, *fields, message.frame});
}

void Coordinator::forward(const Message& message) {
  if (const auto viewModel = viewModel_.lock(); viewModel && viewModel->onScriptMessage)
    viewModel->onScriptMessage(message.name, message.body);
}

void Coordinator::titleChange(const ScriptMessageFields& fields, const Message&) {
  const auto viewModel = viewModel_.lock();
  if (const auto* title = fields.find("title"); viewModel && title)
    viewModel->title.set(*title);
}

void Coordinator::mouseover(const ScriptMessageFields& fields, const Message&) {
  const auto viewModel = viewModel_.lock();
  const auto* href = fields.find("href");
  if (!viewModel || !href)
    return;
  const auto& site = services_.settings.site();
  const auto holds = [href](const std::string& part) { return !part.empty() && href->contains(part); };
  // The text of an earlier external link stays in the bar then.
  if (services_.settings.get(settings::keys::hideInternalLinks) &&
      (holds(site.serviceDomainFragment) || holds(site.userContentDomainSuffix)))
    return;
  viewModel->mouseOverString.set(*href);
}

void Coordinator::print(const ScriptMessageFields&, const Message& message) {
  // One panel a tab, however often its page asks.
  if (printTask_.done())
    printTask_ = scope_.spawn(printWithPanel(message.webView));
}

async::Task<void> Coordinator::printWithPanel(std::weak_ptr<platform::WebView> weakWebView) {
  const auto webView = weakWebView.lock();
  if (!webView || (!window() && !services_.application.keyWindow()))
    co_return;
  co_await webView->print(platform::PrintSettings{});
}

void Coordinator::composeReady(const ScriptMessageFields&, const Message&) {
  if (const auto viewModel = viewModel_.lock())
    scope_.spawn(viewModel->setComposeInWindow(services_.settings.get(settings::keys::composeInNewWindow)));
}

void Coordinator::compose(const ScriptMessageFields& fields, const Message&) {
  const auto* address = fields.find("targetAddress");
  if (!address || address->empty()) {
    scriptLogger_.error("JS log: Cannot create a target address");
    return;
  }
  // A page that couldn't tell its address sends the bare suffix.
  const auto url = address->starts_with('&') ? std::nullopt : base::Url::parse(*address);
  if (!url) {
    scriptLogger_.error("JS compose: invalid targetAddress URL: {}", *address);
    return;
  }
  if (!services_.settings.isServiceOrigin(*address)) {
    scriptLogger_.error("JS compose: targetAddress is none of the service's: {}", *address);
    return;
  }
  auto viewModel = WindowViewModel::make(services_);
  viewModel->urlString.set(url->absoluteString());
  viewModel->webViewConfiguration = services_.scripts.composeConfiguration();
  viewModel->toolbarVisible.set(false);
  viewModel->openInNewWindow = openInNewWindow_;
  if (openInNewWindow_)
    openInNewWindow_(std::move(viewModel), true);
}

void Coordinator::sendClicked(const ScriptMessageFields&, const Message&) {
  letter_.begin(LetterEnd::sent);
}

void Coordinator::discardClicked(const ScriptMessageFields&, const Message&) {
  letter_.begin(LetterEnd::discarded);
}

void Coordinator::discardUndone(const ScriptMessageFields&, const Message&) {
  letter_.discardUndone();
}

// Told anew after each change, and by each page that comes.
void Coordinator::writingChanged(const ScriptMessageFields& fields, const Message&) {
  const auto viewModel = viewModel_.lock();
  if (const auto* isWriting = fields.find("isWriting"); viewModel && isWriting)
    viewModel->reportsWriting = *isWriting == "true";
}

void Coordinator::consoleLog(const ScriptMessageFields& fields, const Message&) {
  if (const auto* text = fields.find("message"))
    scriptLogger_.debug("JS log: {}", *text);
}

void Coordinator::filesAutoShare(const ScriptMessageFields& fields, const Message&) {
  const auto* status = fields.find("status");
  const auto* filename = fields.find("filename");
  const std::string name = filename ? *filename : "the file";
  if (status && *status == "success") {
    scope_.spawn(services_.notifications.send(
        "Attached via Fastmail Files",
        "\"" + name + "\" was too large to attach directly — a share link was added to your email instead.",
        {}, {}));
    return;
  }
  const auto* reason = fields.find("reason");
  scriptLogger_.error("files-auto-share failed for {}: {}", name, reason ? *reason : "");
  scope_.spawn(services_.notifications.send("Couldn't share \"" + name + "\"",
                                            "It's too large to attach — add it via Fastmail Files manually.",
                                            {}, {}));
}

} // namespace ondrel::web
