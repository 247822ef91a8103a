#pragma once

#include "platform/NotificationCenter.h"

#include <cstdint>
#include <deque>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace ondrel::platform::notifications {

// The notifications that a server has taken and that the user can still act on, under the numbers which the
// server gave them. Numbers mean something with that one server only: others are not listened to.
class LiveNotifications {
 public:
  static constexpr std::size_t most = 1000; // beyond that the oldest ones are forgotten

  struct Entry {
    std::uint32_t id = 0;
    NotificationRequest request;
    std::vector<std::string> actions; // what the user was offered
    std::string activationToken;      // lets a window come to the front; came from the server just now
  };

  // The unique name of the server, empty for none. Another one than before forgets all notifications.
  void setServer(const std::string& name);
  const std::string& server() const { return server_; }

  void add(const std::string& sender, Entry entry);
  void remove(const std::string& sender, std::uint32_t id);
  // Forgets the notification of that identifier and gives the server's number for it.
  std::optional<std::uint32_t> remove(const std::string& identifier);
  // Hands them all out.
  std::deque<Entry> takeAll() { return std::exchange(entries_, {}); }
  void setActivationToken(const std::string& sender, std::uint32_t id, std::string_view token);
  // Hands out the notification if that action was offered: it can be acted on once.
  std::optional<Entry> take(const std::string& sender, std::uint32_t id, std::string_view action);

 private:
  std::deque<Entry>::iterator find(const std::string& sender, std::uint32_t id);

  std::string server_;
  std::deque<Entry> entries_; // oldest first
};

} // namespace ondrel::platform::notifications
