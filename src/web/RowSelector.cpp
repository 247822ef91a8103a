#include "web/RowSelector.h"

#include "async/sleep.h"
#include "base/Json.h"
#include "base/Log.h"
#include "base/Text.h"
#include "settings/AppSettings.h"
#include "settings/ServicePage.h"
#include "web/WebServices.h"
#include "web/WebViewConfiguration.h"
#include "web/WindowViewModel.h"

#include <string_view>

namespace ondrel::web {

namespace {

constexpr int attempts = 20;
constexpr std::chrono::milliseconds pause{250};

bool isTrue(const platform::ScriptResult& result) {
  return result && result->is_bool() && result->get_bool();
}

} // namespace

async::Task<void> selectRow(std::string emailId, std::string thread,
                            std::weak_ptr<WindowViewModel> weakViewModel, const WebServices& services) {
  const base::Logger logger("system");
  if (!base::isValidUtf8(emailId) || !base::isValidUtf8(thread))
    co_return;
  const auto script = services.scripts.selectRow() + "(" + base::jsonStringLiteral(emailId) + ", " +
                      base::jsonStringLiteral(thread) + ");";
  for (int attempt = 0; attempt < attempts; ++attempt) {
    bool selected = false;
    if (const auto viewModel = weakViewModel.lock()) {
      if (viewModel->isWritingLetter())
        co_return; // begun while the message was on its way
      const auto result = co_await viewModel->evaluate(script);
      selected = isTrue(result);
    }
    if (selected) {
      logger.info("selectRow: called goMessage(ac.message) for email {} after {} attempt(s)", emailId,
                  attempt + 1);
      co_return;
    }
    co_await async::sleep(pause);
  }
  logger.error("selectRow: gave up calling goMessage for email {} after 20 attempts", emailId);

  if (const auto viewModel = weakViewModel.lock()) {
    const auto booted = co_await viewModel->evaluate(std::string(settings::page::hasBooted));
    if (isTrue(booted))
      co_return;
  }
  logger.error("selectRow: FastMail never booted for email {} — reloading base mailbox", emailId);
  const auto viewModel = weakViewModel.lock();
  if (const auto webView = viewModel ? viewModel->liveWebView() : nullptr)
    webView->load(services.settings.baseURL());
}

} // namespace ondrel::web
