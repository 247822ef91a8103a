#pragma once

#include "async/Scope.h"
#include "jmap/mail/EmailActions.h"
#include "jmap/newmail/AnnouncedMail.h"
#include "jmap/newmail/NewMail.h"
#include "jmap/newmail/NotificationManager.h"
#include "jmap/protocol/JMAPClient.h"

#include <boost/json/object.hpp>

#include <functional>
#include <set>
#include <string>
#include <vector>

namespace ondrel::settings {
class AppSettings;
}

namespace ondrel::jmap {

class MailQueries;

// Tells the user of new mail, and does what the user answers: a click shows the email, its buttons
// archive it, mark it as read or move it to the trash. Takes notifications back when their mail has been seen
// to elsewhere. Main thread only.
class NewMailNotifier {
 public:
  // All outlive it. `openURL` shows an address in a window of the program, `badgeRefresh` asks for the number
  // of unread messages.
  NewMailNotifier(JMAPClient& client, MailQueries& queries, NotificationManager& notifications,
                  settings::AppSettings& settings, std::function<void(const std::string& url)> openURL,
                  std::function<void()> badgeRefresh);
  ~NewMailNotifier();
  NewMailNotifier(const NewMailNotifier&) = delete;
  NewMailNotifier& operator=(const NewMailNotifier&) = delete;

  // Asks for permission and tells which buttons there are; may be done again.
  async::Task<void> setUp();
  // Which of these the user is to be told of: those in the inbox that are neither read nor drafts, in the
  // order of the server's answers. All of them count as in the inbox where nobody can say what that is. An
  // error of a request is the caller's; an answer that can't be understood just tells of nothing.
  async::Task<Result<NewMail>> newMailAmong(std::vector<std::string> ids);
  // One notification after the other, or one for all when there are many.
  async::Task<void> announce(NewMail mail);

  // Notifications of emails that have gone are taken back, those of updated ones are in doubt.
  void emailsChanged(const std::vector<std::string>& updated, const std::vector<std::string>& destroyed);
  // What has changed is not known: all announced emails are in doubt.
  void anyMayHaveChanged() { changed_ = announced_.emailIds(); }
  // Takes back the notifications of emails in doubt that have been read, moved or deleted. An error leaves
  // the question for the next time.
  async::Task<Result<void>> takeBackWhatChanged();
  // For another account.
  void forget();

 private:
  struct Inbox {
    std::string accountId;
    std::optional<std::string> id = {};
    std::vector<boost::json::object> emails = {};
    bool isComplete = true; // all answers could be understood
  };

  async::Task<Result<Inbox>> fetch(std::vector<std::string> ids, boost::json::array properties,
                                   std::string_view operation);
  async::Task<void> announceOne(NewMail::Email email, std::map<std::string, std::string> userInfo);
  void offerActions();
  void lookForArchive();
  async::Task<void> offerArchive();
  void takeBack(const std::string& emailId);
  void respond(const platform::NotificationResponse& response);
  async::Task<void> perform(std::string action, std::string emailId, std::string accountParam);
  void open(const std::map<std::string, std::string>& userInfo, const std::string& page) const;

  JMAPClient& client_;
  MailQueries& queries_;
  EmailActions actions_;
  NotificationManager& notifications_;
  settings::AppSettings& settings_;
  std::function<void(const std::string& url)> openURL_;
  AnnouncedMail announced_;
  std::set<std::string> changed_; // announced emails in doubt
  async::TaskHandle looking_;
  async::Scope scope_;
};

} // namespace ondrel::jmap
