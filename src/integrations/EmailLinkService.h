#pragma once

#include "async/Scope.h"
#include "base/Log.h"
#include "jmap/mail/MailQueries.h"

#include <expected>
#include <optional>
#include <string>

namespace ondrel::app {
class WindowManager;
}

namespace ondrel::jmap {
class NotificationManager;
}

namespace ondrel::platform {
class Application;
class Clipboard;
} // namespace ondrel::platform

namespace ondrel::web {
class WindowViewModel;
struct WebServices;
} // namespace ondrel::web

namespace ondrel::integrations {

enum class EmailLinkError { noActiveTab, noEmailSelected };

// Why there is no link to what is shown: one of these, or what stood in the way of finding out.
struct EmailLinkFailure {
  std::optional<EmailLinkError> error;
  std::string description; // for people
};

// Addresses of single messages outside the program: their links, and the way back to the message. Main thread
// only.
class EmailLinkService {
 public:
  // All outlive it.
  struct Services {
    platform::Application& application;
    app::WindowManager& windowManager;
    const web::WebServices& webServices;
    jmap::MailQueries& mail;
    jmap::NotificationManager& notifications;
    platform::Clipboard& clipboard;
  };

  explicit EmailLinkService(const Services& services) : services_(services) {}

  // Shows a message's address in the active window, or in a new one. With an email id the page is made to
  // open that message, which loading the address alone doesn't do reliably.
  void navigate(const std::string& url, const std::optional<std::string>& emailId = {});

  // Shows the message with that Message-ID, as it stands in a link; also with its percent escapes undone,
  // which other programs have put in. Tells the user when there is none. Of several that are looked for at
  // once the one asked for last stays.
  async::Task<void> openEmail(std::string messageId);
  // The link to the message that the key window shows, in Markdown.
  async::Task<std::expected<std::string, EmailLinkFailure>> currentEmailAddress();
  // Puts a link to that message, in the form that Apple Mail knows, on the clipboard.
  async::Task<void> copyAppleMailLink();

 private:
  async::Task<std::expected<jmap::EmailInfo, EmailLinkFailure>> selectedEmail();
  async::Task<jmap::Result<std::string>> messageURL(std::string messageId);
  std::shared_ptr<web::WindowViewModel> frontTab() const;
  void tellOfFailure(const jmap::JMAPError& error);

  const Services services_;
  const base::Logger logger_{"system"};
  unsigned long asked_ = 0;
  unsigned long shown_ = 0; // the number of the request whose message came last
  async::Scope scope_;
};

} // namespace ondrel::integrations
