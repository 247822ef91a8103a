#include "integrations/EmailLinkService.h"

#include "app/WindowManager.h"
#include "base/Text.h"
#include "base/Translation.h"
#include "base/Url.h"
#include "jmap/mail/MessageURL.h"
#include "jmap/newmail/NotificationManager.h"
#include "platform/Application.h"
#include "platform/Clipboard.h"
#include "settings/ServicePage.h"
#include "web/RowSelector.h"
#include "web/WebServices.h"
#include "web/WindowViewModel.h"

#include <fmt/format.h>

namespace ondrel::integrations {

namespace {

// Bytes; a line of a message has 998 (RFC 5322, section 2.1.1).
constexpr std::size_t longestMessageId = std::size_t{16} << 10;
constexpr std::size_t longestLoggedId = 200;

std::string forLog(const std::string& messageId) {
  return base::displayLine(messageId.substr(0, longestLoggedId));
}

std::string inWords(const jmap::JMAPError& error) {
  using Kind = jmap::JMAPError::Kind;
  switch (error.kind) {
  case Kind::notAuthenticated:
    return base::tr("The link could not be opened. Sign in, and open it again.");
  case Kind::badResponse:
    return base::tr("There is no message for this link in your account.");
  default:
    return base::tr("The link could not be opened: the mail service doesn't answer. Try again later.");
  }
}

std::unexpected<EmailLinkFailure> failure(EmailLinkError error) {
  return std::unexpected(EmailLinkFailure{error, error == EmailLinkError::noActiveTab
                                                     ? base::tr("No active browser tab.")
                                                     : base::tr("No email is currently selected.")});
}

std::unexpected<EmailLinkFailure> otherFailure(std::string text) {
  return std::unexpected(EmailLinkFailure{{}, std::move(text)});
}

} // namespace

void EmailLinkService::navigate(const std::string& url, const std::optional<std::string>& emailId) {
  services_.application.activate();
  const auto shown = services_.windowManager.addresses().loadInActiveWindow(url);
  if (!shown) {
    services_.windowManager.addresses().openURL(url);
  } else if (emailId) {
    const auto address = jmap::MessageAddress::of(url);
    scope_.spawn(web::selectRow(*emailId, address ? address->threadId : "", shown, services_.webServices));
  }
  logger_.info("Navigated to FastMail URL: {}", url);
}

async::Task<void> EmailLinkService::openEmail(std::string messageId) {
  const auto number = ++asked_;
  const auto url = co_await messageURL(messageId);
  if (!url) {
    logger_.error("Hookmark: failed to open email {}: {}", forLog(messageId), url.error().description());
    tellOfFailure(url.error());
    co_return;
  }
  if (number < shown_) {
    logger_.info("Hookmark: email with messageId {} came after a later one", forLog(messageId));
    co_return;
  }
  shown_ = number;
  navigate(*url);
  logger_.info("Hookmark: opened email with messageId {}", forLog(messageId));
}

async::Task<jmap::Result<std::string>> EmailLinkService::messageURL(std::string messageId) {
  using Kind = jmap::JMAPError::Kind;
  if (messageId.size() > longestMessageId)
    co_return std::unexpected(jmap::JMAPError::badResponse());
  auto url = co_await services_.mail.messageURLForMessageId(messageId);
  auto unescaped = base::percentDecoded(messageId);
  const bool isUnknown = !url && url.error().kind == Kind::badResponse;
  if (!isUnknown || unescaped == messageId || base::displayLine(unescaped) != unescaped)
    co_return url;
  co_return co_await services_.mail.messageURLForMessageId(std::move(unescaped));
}

std::shared_ptr<web::WindowViewModel> EmailLinkService::frontTab() const {
  if (services_.application.isHidden())
    return nullptr;
  const auto& windows = services_.windowManager.windows();
  if (auto main = windows.viewModel(services_.application.frontWindow()))
    return main;
  const auto active = windows.activeWindow();
  return active ? active->second : nullptr;
}

void EmailLinkService::tellOfFailure(const jmap::JMAPError& error) {
  if (const auto tab = frontTab())
    tab->noticed.emit({.text = inWords(error)});
  // The user has clicked in another application, or another window of ours covers the tab.
  if (!services_.windowManager.windows().focusedViewModel())
    scope_.spawn(services_.notifications.send(base::tr("Email Link"), inWords(error), "", {}));
}

async::Task<std::expected<jmap::EmailInfo, EmailLinkFailure>> EmailLinkService::selectedEmail() {
  const auto tab = services_.windowManager.windows().focusedViewModel();
  if (!tab)
    co_return failure(EmailLinkError::noActiveTab);
  const auto id = co_await tab->evaluate(std::string(settings::page::selectedEmailId));
  if (!id)
    co_return otherFailure(id.error().message.empty() ? base::tr("The page doesn't answer.")
                                                      : id.error().message);
  const auto* text = id->if_string();
  if (!text || text->empty())
    co_return failure(EmailLinkError::noEmailSelected);
  auto info = co_await services_.mail.emailInfo(std::string(*text));
  if (!info)
    co_return otherFailure(info.error().inWords());
  co_return *std::move(info);
}

async::Task<std::expected<std::string, EmailLinkFailure>> EmailLinkService::currentEmailAddress() {
  auto email = co_await selectedEmail();
  if (!email && email.error().error == EmailLinkError::noEmailSelected)
    logger_.error("Hookmark: no email selected");
  if (!email)
    co_return std::unexpected(std::move(email).error());
  co_return fmt::format("[{}](email://{})", email->subject, email->messageId);
}

async::Task<void> EmailLinkService::copyAppleMailLink() {
  const auto email = co_await selectedEmail();
  if (!email) {
    const auto& reason = email.error().description;
    logger_.error("copyAppleMailLink failed: {}", reason);
    if (const auto tab = frontTab())
      tab->noticed.emit({.text = base::trFormat("The link was not copied: {}", reason)});
    co_return;
  }
  const auto link = fmt::format("message://%3C{}%3E", email->messageId);
  services_.clipboard.writeString(link);
  logger_.info("Apple Mail link copied: {}", link);
  co_await services_.notifications.send(base::tr("Address copied"),
                                        base::tr("The Apple Mail link is on the clipboard, ready to paste."),
                                        "", {});
}

} // namespace ondrel::integrations
