#pragma once

#include "async/Scope.h"
#include "jmap/JMAPClient.h"
#include "jmap/NotificationManager.h"

#include <functional>
#include <string>
#include <vector>

namespace ondrel::settings {
class AppSettings;
}

namespace ondrel::jmap {

class MailQueries;

// Tells the user of new mail, and does what the user answers: a click shows the email, "Delete" moves it to
// the trash. Main thread only.
class NewMailNotifier {
 public:
  // All outlive it. `openURL` shows an address in a window of the program.
  NewMailNotifier(JMAPClient& client, MailQueries& queries, NotificationManager& notifications,
                  settings::AppSettings& settings, std::function<void(const std::string& url)> openURL);
  ~NewMailNotifier();
  NewMailNotifier(const NewMailNotifier&) = delete;
  NewMailNotifier& operator=(const NewMailNotifier&) = delete;

  // Asks for permission and begins to answer what the user does; may be done again.
  async::Task<void> setUp();
  // One notification after the other, in the order of the server's answer, for those in the inbox. For all of
  // them where nobody can say what the inbox is. An error of the request is the caller's; an answer that
  // can't be read just notifies of nothing.
  async::Task<Result<void>> notifyForEmails(std::vector<std::string> ids);

 private:
  void respond(const platform::NotificationResponse& response);
  void openEmail(const std::map<std::string, std::string>& userInfo) const;

  JMAPClient& client_;
  MailQueries& queries_;
  NotificationManager& notifications_;
  settings::AppSettings& settings_;
  std::function<void(const std::string& url)> openURL_;
  async::Scope scope_;
};

} // namespace ondrel::jmap
