#pragma once

#include "async/Task.h"
#include "base/Log.h"
#include "highlights/Conversation.h"
#include "jmap/mail/MailQueries.h"

#include <map>
#include <string>
#include <vector>

namespace ondrel::highlights {

// Which messages a conversation has, from the server, and from memory for those that were in view before.
// Main thread only.
class ThreadLists {
 public:
  // Outlives it.
  explicit ThreadLists(jmap::MailQueries& mail) : mail_(mail) {}

  // From memory; false when it has no list with the open message.
  bool recall(Conversation& conversation) const;
  // Asks the server and settles the conversation. Where the way to the server fails it is asked again, some
  // times, for as long as anybody else holds the conversation; a later call replaces an earlier one.
  async::Task<void> ask(ConversationPtr conversation);

 private:
  struct List {
    std::string threadId;
    std::vector<jmap::ThreadEmailInfo> emails;
  };
  async::Task<jmap::Result<List>> find(std::string threadId, std::string openId);
  async::Task<jmap::Result<List>> listOf(std::string threadId);

  jmap::MailQueries& mail_;
  std::map<std::string, std::vector<jmap::ThreadEmailInfo>> known_; // by thread id
  const base::Logger logger_{"system"};
};

} // namespace ondrel::highlights
