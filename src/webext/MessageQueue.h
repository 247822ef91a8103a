#pragma once

#include "platform/linux/glib/Ref.h"

#include <cstddef>
#include <cstdint>
#include <deque>
#include <map>

namespace ondrel::webext {

// What a script message weighs, in bytes. Small ones cost more than their text to handle and to keep.
std::size_t weightOf(GVariant* message);

// Script messages of a page that wait to be sent. Those of a frame keep their order; the frames take turns.
class MessageQueue {
 public:
  using Message = glib::Owned<GVariant>;

  // Takes the message over. False, without it, when its frame would hold more than what is left for all
  // frames: one that floods fills half of the room, and the others still find some.
  bool add(std::uint64_t frame, Message message);
  // The next one; none when nothing waits.
  Message next();
  bool isEmpty() const { return waiting_.empty(); }

  void drop(std::uint64_t frame);
  void dropAll();

 private:
  struct Frame {
    std::deque<Message> messages;
    std::size_t weight = 0;
  };

  std::map<std::uint64_t, Frame> waiting_; // without empty ones
  std::size_t weight_ = 0;
  std::uint64_t lastServed_ = 0;
};

} // namespace ondrel::webext
