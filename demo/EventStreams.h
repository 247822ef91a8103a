#pragma once

#include "demo/Exchange.h"
#include "demo/MailStore.h"
#include "demo/TakenConnection.h"

#include <list>
#include <map>
#include <memory>

namespace ondrel::demo {

// The event source of RFC 8620, 7.3: tells its listeners which types of data have changed, those who name
// the last event that they know also what they have missed.
class EventStreams {
 public:
  explicit EventStreams(const MailStore& store) : store_(store) {}
  ~EventStreams();
  EventStreams(const EventStreams&) = delete;
  EventStreams& operator=(const EventStreams&) = delete;

  // Makes the request a listener, as its query says, or refuses it.
  void open(Exchange& exchange);
  // To be called after each change. Changes within one turn of the main loop are told together.
  void changed();

  std::size_t listeners() const { return listeners_.size(); }
  // Ends all connections, in order or by a reset.
  void drop(bool isReset);
  // While silent, nothing is sent, pings neither; connections stay and new ones are taken. Afterwards
  // everybody is told what has changed meanwhile.
  void setSilent(bool isSilent);
  // While terse, it says no more than it must: new listeners hear nothing unless they have missed
  // something, and of a change of mail hears who listens for emails, not for mailboxes.
  void setTerse(bool isTerse) { isTerse_ = isTerse; }
  // To all listeners, also while silent.
  void sendRaw(std::string_view bytes);

 private:
  struct Listener {
    EventStreams* streams;
    std::unique_ptr<TakenConnection> connection;
    std::map<std::string, std::string> told; // the types that it wants, with the last state told
    bool isOnce = false;
    unsigned pingSeconds = 0;
    guint pingTimer = 0;
  };

  void remove(const Listener* listener);
  std::string eventId() const;
  void goOnFrom(Listener& listener, const std::optional<std::string>& lastEventId) const;
  void tell(Listener& listener);
  void tellAll();
  static gboolean ping(gpointer listener);

  const MailStore& store_;
  std::list<Listener> listeners_;
  bool isSilent_ = false;
  bool isTerse_ = false;
  guint pending_ = 0;
};

} // namespace ondrel::demo
