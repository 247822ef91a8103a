#include "web/RowSelector.h"

#include "async/sleep.h"
#include "base/Json.h"
#include "base/Log.h"
#include "base/Text.h"
#include "settings/AppSettings.h"
#include "web/WebServices.h"
#include "web/WindowViewModel.h"

#include <string_view>

namespace ondrel::web {

namespace {

constexpr int attempts = 20;
constexpr std::chrono::milliseconds pause{250};

constexpr std::string_view applicationBooted =
    "!!(window.FastMail && FastMail.router && FastMail.router.appController)";

constexpr std::string_view scriptBody = R"js(
  'use strict';
  try {
    const ac = window.FastMail && FastMail.router && FastMail.router.appController;
    const m = ac && ac.message;
    if (!ac || typeof ac.goMessage !== 'function' || !m || m.id() !== emailId) {
      console.log('[Ondrel] show-email: message record not ready yet for ' + emailId);
      return false;
    }
    ac.goMessage(m);
    console.log('[Ondrel] show-email: called goMessage(ac.message) for ' + emailId);
    const exactNeedle = '/' + thread + '.' + emailId;
    const threadNeedle = '/' + thread + '.';
    let exactLink = null;
    let threadLink = null;
    for (const link of document.querySelectorAll('a[href]')) {
      const href = link.getAttribute('href');
      if (href.includes(exactNeedle)) {
        exactLink = link;
        break;
      }
      if (!threadLink && href.includes(threadNeedle)) {
        threadLink = link;
      }
    }
    if (exactLink) {
      console.log('[Ondrel] show-email: exact row link found for ' + emailId);
      return true;
    }
    const row = threadLink && threadLink.closest('li');
    if (row) {
      if (!row.classList.contains('is-focused')) {
        document.querySelectorAll('.is-focused').forEach((other) => other.classList.remove('is-focused'));
        row.classList.add('is-focused');
        row.scrollIntoView({block: 'center'});
        console.log('[Ondrel] show-email: no exact row, approximated via thread row for ' + emailId);
      }
      return true;
    }
    console.log('[Ondrel] show-email: no row found yet for thread ' + thread + ', will retry');
    return false;
  } catch (error) {
    console.log('[Ondrel] show-email: goMessage threw ' + error);
    return false;
  }
)js";

bool isTrue(const platform::ScriptResult& result) {
  return result && result->is_bool() && result->get_bool();
}

} // namespace

std::string selectRowScript(const std::string& emailId, const std::string& thread) {
  return "(function (emailId, thread) {" + std::string(scriptBody) + "})(" +
         base::jsonStringLiteral(emailId) + ", " + base::jsonStringLiteral(thread) + ");";
}

async::Task<void> selectRow(std::string emailId, std::string thread,
                            std::weak_ptr<WindowViewModel> weakViewModel, const WebServices& services) {
  const base::Logger logger("system");
  if (!base::isValidUtf8(emailId) || !base::isValidUtf8(thread))
    co_return;
  const auto script = selectRowScript(emailId, thread);
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
    const auto booted = co_await viewModel->evaluate(std::string(applicationBooted));
    if (isTrue(booted))
      co_return;
  }
  logger.error("selectRow: FastMail never booted for email {} — reloading base mailbox", emailId);
  const auto viewModel = weakViewModel.lock();
  if (const auto webView = viewModel ? viewModel->liveWebView() : nullptr)
    webView->load(services.settings.baseURL());
}

} // namespace ondrel::web
