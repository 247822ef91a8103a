#include "demo/EventStreams.h"

#include "demo/JmapMethod.h"

#include <charconv>
#include <fmt/core.h>
#include <sstream>

namespace ondrel::demo {

namespace json = boost::json;

namespace {

constexpr std::pair<const char*, DataType> types[] = {
    {"Mailbox", DataType::mailbox}, {"Email", DataType::email}, {"Thread", DataType::thread}};

constexpr std::string_view head = "HTTP/1.1 200 OK\r\n"
                                  "Content-Type: text/event-stream; charset=utf-8\r\n"
                                  "Cache-Control: no-store\r\n"
                                  "Connection: close\r\n\r\n";

std::map<std::string, std::string> wantedTypes(const std::string& list) {
  std::map<std::string, std::string> wanted;
  std::istringstream names(list);
  for (std::string name; std::getline(names, name, ',');) {
    for (const auto& [known, type] : types)
      if (name == "*" || name == known)
        wanted[known] = "";
  }
  return wanted;
}

std::optional<unsigned> secondsOf(const std::string& text) {
  unsigned seconds = 0;
  const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), seconds);
  return error == std::errc() && end == text.data() + text.size() && seconds <= 3600 ? std::optional(seconds)
                                                                                     : std::nullopt;
}

} // namespace

EventStreams::~EventStreams() {
  if (pending_)
    g_source_remove(pending_);
  drop(false);
}

void EventStreams::open(Exchange& exchange) {
  const auto wanted = exchange.query("types");
  const auto closeAfter = exchange.query("closeafter").value_or("no");
  const auto ping = secondsOf(exchange.query("ping").value_or("0"));
  if (!wanted || !ping || (closeAfter != "no" && closeAfter != "state")) {
    exchange.refuse(SOUP_STATUS_BAD_REQUEST, "Expected types, closeafter (no or state) and ping (seconds).");
    return;
  }
  auto& listener = listeners_.emplace_back();
  listener.streams = this;
  listener.connection = exchange.takeConnection();
  listener.told = wantedTypes(*wanted);
  goOnFrom(listener, exchange.header("Last-Event-ID"));
  listener.isOnce = closeAfter == "state";
  listener.pingSeconds = *ping;
  listener.connection->onClosed([this, &listener] { remove(&listener); });
  if (*ping > 0)
    listener.pingTimer = g_timeout_add_seconds(*ping, EventStreams::ping, &listener);
  listener.connection->send(head);
  if (!isSilent_)
    tell(listener);
}

void EventStreams::changed() {
  if (!pending_) {
    pending_ = g_idle_add_full(
        G_PRIORITY_HIGH,
        [](gpointer data) -> gboolean {
          auto* self = static_cast<EventStreams*>(data);
          self->pending_ = 0;
          if (!self->isSilent_)
            self->tellAll();
          return G_SOURCE_REMOVE;
        },
        this, nullptr);
  }
}

void EventStreams::drop(bool isReset) {
  while (!listeners_.empty()) {
    if (isReset)
      listeners_.front().connection->resetAtEnd();
    remove(&listeners_.front());
  }
}

void EventStreams::setSilent(bool isSilent) {
  isSilent_ = isSilent;
  if (!isSilent_)
    tellAll();
}

void EventStreams::sendRaw(std::string_view bytes) {
  for (auto& listener : listeners_)
    listener.connection->send(bytes);
}

void EventStreams::remove(const Listener* listener) {
  if (listener->pingTimer)
    g_source_remove(listener->pingTimer);
  listeners_.remove_if([&](const Listener& other) { return &other == listener; });
}

std::string EventStreams::eventId() const {
  std::string id;
  for (const auto& [name, type] : types)
    id += (id.empty() ? "" : ".") + store_.changes().state(type);
  return id;
}

// One that can't be understood stands for having missed everything.
void EventStreams::goOnFrom(Listener& listener, const std::optional<std::string>& lastEventId) const {
  if (!lastEventId && !isTerse_)
    return;
  std::istringstream states(lastEventId.value_or(eventId()));
  auto told = listener.told;
  for (const auto& [name, type] : types) {
    std::string state;
    if (!std::getline(states, state, '.') || !store_.changes().since(type, state, 1))
      return;
    if (const auto wanted = told.find(name); wanted != told.end())
      wanted->second = state;
  }
  listener.told = std::move(told);
}

void EventStreams::tell(Listener& listener) {
  json::object changes;
  for (const auto& [name, type] : types) {
    if (isTerse_ && type == DataType::mailbox)
      continue;
    const auto known = listener.told.find(name);
    const auto state = store_.changes().state(type);
    if (known != listener.told.end() && known->second != state) {
      known->second = state;
      changes[name] = state;
    }
  }
  if (changes.empty())
    return;
  const json::object event{{"@type", "StateChange"},
                           {"changed", json::object{{mailAccountId, std::move(changes)}}}};
  listener.connection->send(
      fmt::format("event: state\ndata: {}\nid: {}\n\n", json::serialize(event), eventId()));
  if (listener.isOnce)
    listener.connection->finish();
}

void EventStreams::tellAll() {
  for (auto& listener : listeners_)
    tell(listener);
}

gboolean EventStreams::ping(gpointer data) {
  const auto* listener = static_cast<Listener*>(data);
  if (!listener->streams->isSilent_) {
    listener->connection->send(
        fmt::format("event: ping\ndata: {{\"interval\":{}}}\n\n", listener->pingSeconds));
  }
  return G_SOURCE_CONTINUE;
}

} // namespace ondrel::demo
