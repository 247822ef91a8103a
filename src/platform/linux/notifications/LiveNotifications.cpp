#include "platform/linux/notifications/LiveNotifications.h"

#include <algorithm>
#include <utility>

namespace ondrel::platform::notifications {

namespace {

constexpr std::size_t longestToken = 512;

bool isPrintableAscii(std::string_view text) {
  return std::ranges::all_of(text, [](char c) { return c > ' ' && c < '\x7f'; });
}

} // namespace

void LiveNotifications::setServer(const std::string& name) {
  if (name == server_)
    return;
  server_ = name;
  entries_.clear();
}

std::deque<LiveNotifications::Entry>::iterator LiveNotifications::find(const std::string& sender,
                                                                       std::uint32_t id) {
  return sender == server_ ? std::ranges::find(entries_, id, &Entry::id) : entries_.end();
}

void LiveNotifications::add(const std::string& sender, Entry entry) {
  if (server_.empty() || sender != server_ || entry.id == 0)
    return;
  remove(sender, entry.id); // the server counts from the beginning again
  entries_.push_back(std::move(entry));
  if (entries_.size() > most)
    entries_.pop_front();
}

void LiveNotifications::remove(const std::string& sender, std::uint32_t id) {
  if (const auto found = find(sender, id); found != entries_.end())
    entries_.erase(found);
}

std::optional<std::uint32_t> LiveNotifications::remove(const std::string& identifier) {
  const auto found = std::ranges::find(
      entries_, identifier, [](const Entry& entry) -> const auto& { return entry.request.identifier; });
  if (found == entries_.end())
    return std::nullopt;
  const auto id = found->id;
  entries_.erase(found);
  return id;
}

void LiveNotifications::setActivationToken(const std::string& sender, std::uint32_t id,
                                           std::string_view token) {
  const auto found = find(sender, id);
  if (found != entries_.end() && token.size() <= longestToken && isPrintableAscii(token))
    found->activationToken = token;
}

std::optional<LiveNotifications::Entry> LiveNotifications::take(const std::string& sender, std::uint32_t id,
                                                                std::string_view action) {
  const auto found = find(sender, id);
  if (found == entries_.end() || std::ranges::find(found->actions, action) == found->actions.end())
    return std::nullopt;
  auto entry = std::move(*found);
  entries_.erase(found);
  return entry;
}

} // namespace ondrel::platform::notifications
