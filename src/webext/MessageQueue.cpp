#include "webext/MessageQueue.h"

#include <utility>

namespace ondrel::webext {

namespace {

constexpr std::size_t largestWeight = std::size_t{16} << 20;
constexpr std::size_t leastWeight = 256;

} // namespace

std::size_t weightOf(GVariant* message) {
  return leastWeight + g_variant_get_size(message);
}

bool MessageQueue::add(std::uint64_t frame, Message message) {
  const auto weight = weightOf(message.get());
  const auto found = waiting_.find(frame);
  const auto held = found == waiting_.end() ? 0 : found->second.weight;
  if (held + weight > largestWeight - weight_)
    return false;
  auto& entry = waiting_[frame];
  entry.messages.push_back(std::move(message));
  entry.weight += weight;
  weight_ += weight;
  return true;
}

MessageQueue::Message MessageQueue::next() {
  if (waiting_.empty())
    return nullptr;
  auto entry = waiting_.upper_bound(lastServed_);
  if (entry == waiting_.end())
    entry = waiting_.begin();
  lastServed_ = entry->first;
  auto& frame = entry->second;
  auto message = std::move(frame.messages.front());
  frame.messages.pop_front();
  const auto weight = weightOf(message.get());
  frame.weight -= weight;
  weight_ -= weight;
  if (frame.messages.empty())
    waiting_.erase(entry);
  return message;
}

void MessageQueue::drop(std::uint64_t frame) {
  if (const auto found = waiting_.find(frame); found != waiting_.end()) {
    weight_ -= found->second.weight;
    waiting_.erase(found);
  }
}

void MessageQueue::dropAll() {
  waiting_.clear();
  weight_ = 0;
}

} // namespace ondrel::webext
