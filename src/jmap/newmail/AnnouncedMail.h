#pragma once

#include <deque>
#include <set>
#include <string>
#include <vector>

namespace ondrel::jmap {

// Which emails the notifications tell of that nobody has answered or taken back yet. Main thread only.
class AnnouncedMail {
 public:
  static constexpr std::size_t most = 1000; // notifications; beyond that the oldest ones are forgotten

  void add(std::string notification, std::vector<std::string> emailIds);
  // The user has answered it.
  void forget(const std::string& notification);
  bool tellsOf(const std::string& emailId) const;
  std::set<std::string> emailIds() const;
  // That email is none any more that the user is to be told of. Gives the notifications that have lost their
  // last one, and forgets them.
  std::vector<std::string> remove(const std::string& emailId);
  void clear() { entries_.clear(); }

 private:
  struct Entry {
    std::string notification;
    std::set<std::string> emailIds;
  };

  std::deque<Entry> entries_; // oldest first
};

} // namespace ondrel::jmap
