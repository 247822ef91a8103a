#pragma once

#include "jmap/mail/EmailPatch.h"

#include <functional>
#include <optional>
#include <string>

namespace ondrel::jmap {

class MailQueries;

// What the user does to an email without looking at it. What fails is logged. Main thread only.
class EmailActions {
 public:
  // Both outlive it. `badgeRefresh` is called when the number of unread messages may have changed.
  EmailActions(JMAPClient& client, MailQueries& queries, std::function<void()> badgeRefresh);

  // Finds out whether the account has an archive, once.
  async::Task<void> lookForArchive();
  bool canArchive() const { return archiveId_.has_value(); }
  // For another account.
  void forget();
  // From the inbox to the archive. An email that has left the inbox meanwhile stays where it is.
  async::Task<void> archive(std::string emailId);
  async::Task<void> markAsRead(std::string emailId);

 private:
  using Change = async::Task<Result<void>> (EmailActions::*)(MailAccount account, std::string emailId);
  async::Task<void> perform(std::string operation, std::string emailId, Change change);
  async::Task<Result<void>> moveToArchive(MailAccount account, std::string emailId);
  async::Task<Result<void>> setSeen(MailAccount account, std::string emailId);

  JMAPClient& client_;
  MailQueries& queries_;
  const std::function<void()> badgeRefresh_;
  bool knowsArchive_ = false;
  std::optional<std::string> archiveId_;
};

} // namespace ondrel::jmap
