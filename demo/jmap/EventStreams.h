#pragma once

#include "async/Timer.h"
#include "demo/http/Exchange.h"
#include "demo/http/Stream.h"
#include "demo/mail/MailStore.h"

#include <list>
#include <map>
#include <optional>

namespace ondrel::demo::jmap {

// The event source of RFC 8620, 7.3: tells its listeners which types of data have changed, those who name
// the last event that they know also what they have missed. Changes within one turn of the main loop are told
// together.
class EventStreams {
 public:
  explicit EventStreams(mail::MailStore& store);

  // Makes the request a listener, as its query says, or refuses it.
  void open(http::Exchange& exchange);
  std::size_t listeners() const { return listeners_.size(); }
  // Ends all connections.
  void drop() { listeners_.clear(); }
  // While terse, it says no more than it must: new listeners hear nothing unless they have missed
  // something, and of a change of mail hears who listens for emails, not for mailboxes.
  void setTerse(bool isTerse) { isTerse_ = isTerse; }

 private:
  struct Listener {
    std::map<std::string, std::string> told; // the types that it wants, with the last state told
    std::chrono::seconds interval{0};
    async::Timer ping = {};
    std::optional<http::Stream> stream = std::nullopt;
  };

  std::string eventId() const;
  void tell(Listener& listener);
  void schedulePing(Listener& listener);

  mail::MailStore& store_;
  std::list<Listener> listeners_;
  bool isTerse_ = false;
  bool isPending_ = false;
  async::Timer pending_;
  base::Subscription changes_;
};

} // namespace ondrel::demo::jmap
