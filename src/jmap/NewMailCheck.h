#pragma once

#include "async/Task.h"
#include "base/Log.h"
#include "jmap/JMAPClient.h"

#include <functional>
#include <optional>
#include <string>
#include <vector>

namespace ondrel::jmap {

// Finds out which messages are new, by the states of the account's emails (RFC 8620, section 5.2). A message
// is told once at most; after a failure the check begins from the present and what came in the gap is not
// told. Checks must not overlap. Main thread only.
class NewMailCheck {
 public:
  using Notify = std::function<async::Task<Result<void>>(std::vector<std::string> emailIds)>;

  // The client outlives it.
  NewMailCheck(JMAPClient& client, Notify notify);

  // Takes the present as the state to start from.
  async::Task<void> seedEmailState();
  // Notifies for what was created since the last check; seeds where there was none.
  async::Task<void> checkAndNotifyNewEmails();

  const std::optional<std::string>& lastEmailState() const { return lastEmailState_; }
  void clear() { lastEmailState_.reset(); }

 private:
  struct EmailChanges {
    std::vector<std::string> created;
    std::string newState;
  };

  async::Task<Result<std::string>> fetchCurrentEmailState();
  async::Task<Result<EmailChanges>> fetchEmailChanges(std::string since);
  async::Task<Result<void>> checkSince(std::string since);

  base::Logger logger_{"network"};
  JMAPClient& client_;
  Notify notify_;
  std::optional<std::string> lastEmailState_;
};

} // namespace ondrel::jmap
