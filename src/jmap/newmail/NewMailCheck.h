#pragma once

#include "async/Task.h"
#include "base/Log.h"
#include "jmap/newmail/NewMailNotifier.h"
#include "jmap/protocol/JMAPClient.h"
#include "jmap/protocol/RetryingWorker.h"

#include <optional>
#include <set>
#include <string>
#include <vector>

namespace ondrel::jmap {

// Finds out which messages are new, by the states of the account's emails (RFC 8620, section 5.2). A message
// is told once at most. What fails on the way is asked again from the same state; only where the server says
// that it can't go on from there, or what it says can't be read, the check begins from the present and what
// came in the gap is not told. Checks must not overlap. Main thread only.
class NewMailCheck {
 public:
  // How long the requests of a check may take in all.
  static constexpr std::chrono::seconds longestCheck{60};

  // Both outlive it.
  NewMailCheck(JMAPClient& client, NewMailNotifier& notifier);

  // Takes the present as the state to start from where none is known.
  async::Task<Result<void>> seedEmailState();
  // Takes the changes since the last check, and when these are all, notifies for what was created; seeds
  // where no state is known.
  async::Task<WorkOutcome> checkAndNotifyNewEmails();

  const std::optional<std::string>& lastEmailState() const { return lastEmailState_; }
  // For another account. A check that is under way must have been cancelled.
  void clear();

 private:
  struct EmailChanges {
    std::vector<std::string> created;
    std::vector<std::string> updated;
    std::vector<std::string> destroyed;
    std::string newState;
    bool hasMore = false;
  };
  struct Findings {
    WorkOutcome outcome = WorkOutcome::done;
    NewMail mail = {};
  };

  async::Task<Findings> findOut();
  async::Task<Result<std::string>> fetchCurrentEmailState();
  async::Task<Result<EmailChanges>> fetchEmailChanges(std::string since);
  // Whether all have been taken.
  async::Task<Result<bool>> takeChanges();
  async::Task<WorkOutcome> seedAnew(JMAPError error);
  async::Task<Result<NewMail>> lookAtCreated();
  bool isAnother(const std::string& state);

  base::Logger logger_{"network"};
  JMAPClient& client_;
  NewMailNotifier& notifier_;
  std::optional<std::string> lastEmailState_;
  std::vector<std::string> created_;   // not yet told
  std::set<std::string> passedStates_; // of the changes that are being taken in several steps
};

} // namespace ondrel::jmap
