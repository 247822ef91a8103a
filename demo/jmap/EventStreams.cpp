#include "demo/jmap/EventStreams.h"

#include "base/Json.h"
#include "base/Text.h"
#include "demo/jmap/JmapMethods.h"

#include <boost/json.hpp>
#include <fmt/core.h>

namespace ondrel::demo::jmap {

namespace json = boost::json;

namespace {

constexpr std::pair<const char*, mail::DataType> types[] = {{"Mailbox", mail::DataType::mailbox},
                                                            {"Email", mail::DataType::email}};

} // namespace

EventStreams::EventStreams(mail::MailStore& store) : store_(store) {
  changes_ = store.changed.subscribe([this] {
    if (std::exchange(isPending_, true))
      return;
    pending_ = async::Timer({}, [this] {
      isPending_ = false;
      for (auto& listener : listeners_)
        tell(listener);
    });
  });
}

void EventStreams::open(http::Exchange& exchange) {
  const auto wanted = exchange.query("types");
  const auto ping = base::parsedInteger(exchange.query("ping").value_or(""));
  if (!wanted || !ping || *ping < 0 || exchange.query("closeafter") != "no") {
    exchange.refuse(SOUP_STATUS_BAD_REQUEST, "Expected types, closeafter=no and ping (seconds).");
    return;
  }
  auto& listener = listeners_.emplace_back();
  // A state that isn't one, or none, stands for having missed everything.
  const auto lastEventId = exchange.header("Last-Event-ID").value_or(isTerse_ ? eventId() : "");
  const auto [mailboxState, emailState] = http::split(lastEventId);
  for (const auto& [name, state] : {std::pair("Mailbox", mailboxState), std::pair("Email", emailState)})
    if (("," + *wanted + ",").contains(std::string(",") + name + ","))
      listener.told[name] = state;
  listener.stream.emplace(exchange.message(), "text/event-stream; charset=utf-8", [this, &listener] {
    listeners_.remove_if([&](const Listener& other) { return &other == &listener; });
  });
  listener.interval = std::chrono::seconds(*ping);
  schedulePing(listener);
  tell(listener);
}

std::string EventStreams::eventId() const {
  return store_.changes().state(mail::DataType::mailbox) + "/" +
         store_.changes().state(mail::DataType::email);
}

void EventStreams::tell(Listener& listener) {
  json::object changes;
  for (const auto& [name, type] : types) {
    const auto known = listener.told.find(name);
    const auto state = store_.changes().state(type);
    if (known == listener.told.end() || known->second == state ||
        (isTerse_ && type == mail::DataType::mailbox))
      continue;
    known->second = state;
    changes[name] = state;
  }
  if (changes.empty())
    return;
  const json::object event{{"@type", "StateChange"}, {"changed", {{mailAccountId, std::move(changes)}}}};
  listener.stream->send(fmt::format("event: state\ndata: {}\nid: {}\n\n", base::jsonText(event), eventId()));
}

void EventStreams::schedulePing(Listener& listener) {
  if (listener.interval.count() == 0)
    return;
  listener.ping = async::Timer(listener.interval, [this, &listener] {
    listener.stream->send(
        fmt::format("event: ping\ndata: {{\"interval\":{}}}\n\n", listener.interval.count()));
    schedulePing(listener);
  });
}

} // namespace ondrel::demo::jmap
