#pragma once

#include "base/Event.h"
#include "jmap/mail/MailQueries.h"
#include "jmap/mail/MessageURL.h"

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

namespace ondrel::highlights {

// A conversation in the view of one tab, and its messages as far as they are known. A list that is known
// never changes: when a message has come, the tab's view is another Conversation. Main thread only.
struct Conversation {
  // The application hasn't told yet which message is open; the server is being asked; it has answered; it
  // hasn't, or knows no such conversation.
  enum class State { unasked, asking, known, failed };

  jmap::MessageAddress address; // of the page when it came into view
  std::string openId;           // of the email that the application has open in it; empty while unasked
  State state = State::unasked;
  std::string threadId; // the server's, once it is known
  std::vector<jmap::ThreadEmailInfo> emails;
  std::uint64_t asked = 0; // how often
  base::Event<> settled;   // known now, or failed

  // The page shows this conversation still.
  bool isAt(const jmap::MessageAddress& other) const;
};

bool holds(const std::vector<jmap::ThreadEmailInfo>& emails, const std::string& emailId);

using ConversationPtr = std::shared_ptr<Conversation>;

} // namespace ondrel::highlights
