#include "web/TabPrinting.h"

#include "base/Text.h"
#include "base/Translation.h"
#include "platform/Panels.h"
#include "platform/WebView.h"
#include "web/WebServices.h"
#include "web/WebViewConfiguration.h"
#include "web/WindowViewModel.h"

#include <string>

namespace ondrel::web {

using platform::PrintResult;

namespace {

using WeakTab = std::weak_ptr<WindowViewModel>;

// A page that can't is printed as it stands.
async::Task<void> arrangePage(WeakTab weakTab, std::string script, bool isPrinted) {
  auto tab = weakTab.lock();
  if (!tab || script.empty())
    co_return;
  auto arranging = tab->evaluate(script + (isPrinted ? "(true);" : "(false);"));
  tab.reset();
  [[maybe_unused]] const auto ignored = co_await std::move(arranging);
}

async::Task<PrintResult> printPage(WeakTab weakTab, platform::PrintSettings settings, std::string script) {
  auto tab = weakTab.lock();
  auto webView = tab ? tab->liveWebView() : nullptr;
  tab.reset();
  if (!webView)
    co_return PrintResult::cancelled;
  settings.arrange = [weakTab, script] { return arrangePage(weakTab, script, true); };
  auto printing = webView->print(std::move(settings));
  webView.reset();
  const auto result = co_await std::move(printing);
  if (result != PrintResult::cancelled)
    co_await arrangePage(weakTab, script, false);
  co_return result;
}

async::Task<void> tellOfFailure(std::string title, std::string advice,
                                std::shared_ptr<platform::Window> parent, platform::Panels& panels) {
  platform::Alert alert{std::move(title), std::move(advice), platform::AlertStyle::warning, {base::tr("OK")}};
  co_await panels.runAlert(std::move(alert), std::move(parent));
}

std::string documentName(const std::string& title) {
  // TRANSLATORS: the name of a file that has none
  return base::safeFileName(title, base::tr("Document"));
}

} // namespace

async::Task<void> printWithPanel(WeakTab weakTab, const WebServices& services) {
  auto tab = weakTab.lock();
  if (!tab)
    co_return;
  const auto path = std::make_shared<std::string>();
  platform::PrintSettings settings;
  settings.name = documentName(*tab->title);
  settings.writesFile = [path](std::string file) { *path = std::move(file); };
  tab.reset();
  const auto result = co_await printPage(weakTab, std::move(settings), services.scripts.printedMessage());
  tab = weakTab.lock();
  if (tab && result == PrintResult::done && !path->empty())
    tab->fileMade.emit(*path);
  if (tab && result == PrintResult::failed)
    co_await tellOfFailure(
        base::tr("The page could not be printed"),
        base::tr("See whether the printer is on and has paper, or whether the folder is there and has "
                 "space left."),
        tab->window.lock(), services.panels);
}

async::Task<void> exportAsPDF(WeakTab weakTab, std::shared_ptr<platform::Window> parent,
                              const WebServices& services) {
  const auto title = weakTab.expired() ? std::string() : *weakTab.lock()->title;
  platform::SavePanel panel{base::safeFileName(documentName(title) + ".pdf", documentName({}) + ".pdf"),
                            {"application/pdf"}};
  auto path = co_await services.panels.runSavePanel(std::move(panel), parent);
  if (!path)
    co_return;
  platform::PrintSettings settings;
  settings.pdfPath = *path;
  const auto result = co_await printPage(weakTab, std::move(settings), services.scripts.printedMessage());
  const auto tab = weakTab.lock();
  if (tab && result == PrintResult::done)
    tab->fileMade.emit(*path);
  if (result == PrintResult::failed)
    co_await tellOfFailure(base::tr("The PDF could not be saved"),
                           base::tr("Choose another folder, or see whether there is space left on the disk."),
                           parent, services.panels);
}

} // namespace ondrel::web
