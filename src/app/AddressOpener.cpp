#include "app/AddressOpener.h"

#include "app/TabOpener.h"
#include "platform/Application.h"
#include "web/WebServices.h"
#include "web/WindowViewModel.h"
#include "web/page/MailURL.h"

#include <algorithm>

namespace ondrel::app {

using ViewModelPtr = AddressOpener::ViewModel;

ViewModelPtr AddressOpener::showIn(const ActiveWindow& window, const std::string& url) {
  window.second->show(url);
  window.first->unminimize();
  window.first->present();
  tabReplaced.emit();
  return window.second;
}

ViewModelPtr AddressOpener::viewModelAt(const std::string& url) const {
  auto viewModel = tabs_.newViewModel();
  viewModel->urlString.set(url);
  return viewModel;
}

ViewModelPtr AddressOpener::openURL(const std::string& url) {
  windowWanted_();
  application_.activate();
  const auto windows = windows_.shownWithoutLetters();
  if (windows.empty())
    return openBesideLetters(url);
  // Here the focused window has no preference: a message goes where mail is shown.
  const auto withMail = std::ranges::find_if(
      windows, [](const ActiveWindow& window) { return web::containsMail(*window.second->urlString); });
  return showIn(withMail == windows.end() ? windows.front() : *withMail, url);
}

// A compose window stays one for its letter.
ViewModelPtr AddressOpener::openBesideLetters(const std::string& url) {
  auto viewModel = viewModelAt(url);
  const auto windows = windows_.shown();
  const auto& composing = services_.scripts.composeConfiguration();
  const auto neighbour = std::ranges::find_if(windows, [&composing](const ActiveWindow& window) {
    return window.second->webViewConfiguration != composing;
  });
  if (neighbour == windows.end())
    tabs_.showAlone(tabs_.makeWindow(viewModel));
  else
    tabs_.openTab(viewModel, neighbour->first, true);
  return viewModel;
}

ViewModelPtr AddressOpener::loadInActiveWindow(const std::string& url) {
  windowWanted_();
  const auto active = windows_.activeOf(windows_.shownWithoutLetters());
  return active ? showIn(*active, url) : nullptr;
}

ViewModelPtr AddressOpener::openInNewTabOrWindow(const std::string& url) {
  windowWanted_();
  application_.activate();
  auto viewModel = viewModelAt(url);
  if (const auto active = windows_.activeWindow())
    tabs_.openTab(viewModel, active->first, true);
  else
    tabs_.showAlone(tabs_.makeWindow(viewModel));
  return viewModel;
}

ViewModelPtr AddressOpener::openTabBehind(const std::string& url) {
  const auto active = windows_.activeWindow();
  if (!active)
    return nullptr;
  auto viewModel = viewModelAt(url);
  viewModel->firstPage = web::RestoredPage();
  tabs_.openFrom(active->first, viewModel, false);
  return viewModel;
}

} // namespace ondrel::app
