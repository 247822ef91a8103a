#include "web/PageMessages.h"

#include "base/Translation.h"
#include "base/Url.h"
#include "jmap/newmail/NotificationManager.h"
#include "platform/Application.h"
#include "platform/ScriptMessage.h"
#include "platform/Window.h"
#include "settings/AppSettings.h"
#include "web/LetterHandOver.h"
#include "web/PageOpener.h"
#include "web/WebServices.h"
#include "web/WebViewConfiguration.h"
#include "web/WindowViewModel.h"

#include <algorithm>

namespace ondrel::web {

const PageMessages::Route PageMessages::routes[] = {
    {"titleChange", Trust::mainFrameOrService, &PageMessages::titleChange},
    {"mouseover", Trust::mainFrameOrService, &PageMessages::mouseover},
    {"print", Trust::mainFrameOrService, &PageMessages::print},
    {"composeReady", Trust::serviceOnly, &PageMessages::composeReady},
    {"compose", Trust::serviceOnly, &PageMessages::compose},
    {"sendClicked", Trust::serviceOnly, &PageMessages::sendClicked},
    {"discardClicked", Trust::serviceOnly, &PageMessages::discardClicked},
    {"discardUndone", Trust::serviceOnly, &PageMessages::discardUndone},
    {"ondrelWritingChanged", Trust::serviceOnly, &PageMessages::writingChanged},
    {"consoleLog", Trust::anyFrame, &PageMessages::consoleLog},
    {"ondrelFilesAutoShare", Trust::serviceOnly, &PageMessages::filesAutoShare},
};

PageMessages::PageMessages(std::weak_ptr<WindowViewModel> viewModel, const WebServices& services,
                           PageOpener& opener, LetterHandOver& letter)
    : viewModel_(std::move(viewModel)), services_(services), opener_(opener), letter_(letter) {
}

void PageMessages::receive(const platform::ScriptMessage& message) {
  const auto viewModel = viewModel_.lock();
  const auto fields = message.name == scriptMessageHandlerName ? Fields::from(message.body) : std::nullopt;
  const auto* type = fields ? fields->find("type") : nullptr;
  const auto* own = type ? std::ranges::find(routes, *type, &Route::type) : std::end(routes);
  const auto features = type ? services_.messages.find(*type) : nullptr;
  if (own == std::end(routes) && !features) {
    if (viewModel && viewModel->onScriptMessage)
      viewModel->onScriptMessage(message.name, message.body);
    return;
  }
  if (!isTrusted(features ? features->trust : own->trust, message.frame, services_.settings)) {
    logger_.debug("A message of type {} from a frame of {} was dropped", *type, message.frame.origin);
    return;
  }
  if (!features)
    (this->*own->handle)(*fields);
  else if (viewModel)
    features->handle({viewModel, *fields, message.frame});
}

void PageMessages::titleChange(const Fields& fields) {
  const auto viewModel = viewModel_.lock();
  if (const auto* title = fields.find("title"); viewModel && title)
    viewModel->title.set(*title);
}

void PageMessages::mouseover(const Fields& fields) {
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

void PageMessages::print(const Fields&) {
  // One panel a tab, however often its page asks.
  if (printTask_.done())
    printTask_ = scope_.spawn(printWithPanel());
}

async::Task<void> PageMessages::printWithPanel() {
  const auto viewModel = viewModel_.lock();
  const bool hasWindow = viewModel && viewModel->window.lock();
  if (!viewModel || (!hasWindow && !services_.application.focusedWindow()))
    co_return;
  co_await viewModel->print();
}

void PageMessages::composeReady(const Fields&) {
  if (const auto viewModel = viewModel_.lock())
    scope_.spawn(viewModel->setComposeInWindow(services_.settings.get(settings::keys::composeInNewWindow)));
}

void PageMessages::compose(const Fields& fields) {
  const auto* address = fields.find("targetAddress");
  if (!address || address->empty()) {
    logger_.error("JS log: Cannot create a target address");
    return;
  }
  // A page that couldn't tell its address sends the bare suffix.
  const auto url = address->starts_with('&') ? std::nullopt : base::Url::parse(*address);
  if (!url) {
    logger_.error("JS compose: invalid targetAddress URL: {}", *address);
    return;
  }
  if (!services_.settings.isServiceOrigin(*address)) {
    logger_.error("JS compose: targetAddress is none of the service's: {}", *address);
    return;
  }
  auto viewModel = WindowViewModel::make(services_);
  viewModel->urlString.set(url->absoluteString());
  viewModel->webViewConfiguration = services_.scripts.composeConfiguration();
  viewModel->toolbarVisible.set(false);
  opener_.openWindow(std::move(viewModel));
}

void PageMessages::sendClicked(const Fields&) {
  letter_.begin(LetterEnd::sent);
}

void PageMessages::discardClicked(const Fields&) {
  letter_.begin(LetterEnd::discarded);
}

void PageMessages::discardUndone(const Fields&) {
  letter_.discardUndone();
}

// Told anew after each change, and by each page that comes.
void PageMessages::writingChanged(const Fields& fields) {
  const auto viewModel = viewModel_.lock();
  if (const auto* isWriting = fields.find("isWriting"); viewModel && isWriting)
    viewModel->reportsWriting = *isWriting == "true";
}

void PageMessages::consoleLog(const Fields& fields) {
  if (const auto* text = fields.find("message"))
    logger_.debug("JS log: {}", *text);
}

void PageMessages::filesAutoShare(const Fields& fields) {
  const auto* status = fields.find("status");
  const auto* filename = fields.find("filename");
  const std::string name = filename ? *filename : base::tr("the file");
  if (status && *status == "success") {
    scope_.spawn(services_.notifications.send(
        base::tr("Attached via Fastmail Files"),
        base::trFormat(
            "\"{}\" was too large to attach directly — a share link was added to your email instead.", name),
        {}, {}));
    return;
  }
  const auto* reason = fields.find("reason");
  logger_.error("files-auto-share failed for {}: {}", name, reason ? *reason : "");
  scope_.spawn(services_.notifications.send(
      base::trFormat("Couldn't share \"{}\"", name),
      base::tr("It's too large to attach — add it via Fastmail Files manually."), {}, {}));
}

} // namespace ondrel::web
