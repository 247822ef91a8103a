#include "web/Coordinator.h"

#include "platform/Panels.h"
#include "platform/WebView.h"
#include "web/WebServices.h"
#include "web/WindowViewModel.h"

namespace ondrel::web {

// The engine doesn't tell which frame asks: all of them speak for the tab's page.
void Coordinator::runAlertPanel(const std::string& message, platform::DoneReply reply) {
  letter_.pageAsks();
  if (const auto viewModel = viewModel_.lock())
    viewModel->dialogs.alert(webView_->url().value_or(""), message, std::move(reply));
}

void Coordinator::runConfirmPanel(const std::string& message, platform::DoneReply reply) {
  letter_.pageAsks();
  if (const auto viewModel = viewModel_.lock())
    viewModel->dialogs.confirm(webView_->url().value_or(""), message, std::move(reply));
}

void Coordinator::runPromptPanel(const std::string& message, const std::string& text,
                                 platform::PromptReply reply) {
  letter_.pageAsks();
  if (const auto viewModel = viewModel_.lock())
    viewModel->dialogs.prompt(webView_->url().value_or(""), message, text, std::move(reply));
}

void Coordinator::runBeforeUnloadPanel(platform::DoneReply reply) {
  const auto viewModel = viewModel_.lock();
  if (!viewModel)
    return;
  viewModel->dialogs.leave(
      {[weak = viewModel_, webView = std::weak_ptr(webView_), inner = std::move(reply)](bool leave) mutable {
         std::move(inner)(leave);
         const auto tab = weak.lock();
         const auto page = webView.lock();
         // An address that was asked for is not where the tab is.
         if (const auto url = page ? page->url() : std::nullopt; tab && url && !leave)
           tab->urlString.set(*url);
       },
       false});
}

void Coordinator::runOpenPanel(const platform::OpenPanelParameters& parameters, platform::FilesReply reply) {
  letter_.pageAsks();
  scope_.spawn(answerOpenPanel(parameters, std::move(reply)));
}

async::Task<void> Coordinator::answerOpenPanel(platform::OpenPanelParameters parameters,
                                               platform::FilesReply reply) {
  platform::OpenPanel panel;
  panel.allowsMultipleSelection = parameters.allowsMultipleSelection;
  panel.mimeTypes = std::move(parameters.mimeTypes);
  auto files = co_await services_.panels.runOpenPanel(std::move(panel), window());
  std::move(reply)(std::move(files));
}

void Coordinator::didRefuseFiles(const std::string& text) {
  if (const auto viewModel = viewModel_.lock())
    viewModel->noticed.emit({.text = text});
}

} // namespace ondrel::web
