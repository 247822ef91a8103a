#include "demo/control/ControlSurface.h"

#include "base/Json.h"
#include "base/JsonReader.h"
#include "base/LoopbackHost.h"
#include "demo/control/Delivery.h"
#include "demo/mail/AttachmentMail.h"

#include <algorithm>

namespace ondrel::demo::control {

namespace json = boost::json;

ControlSurface::ControlSurface(Controlled parts) : parts_(parts) {
  const auto doing = [](auto effect) {
    return [effect](const json::object& order) -> Answer {
      effect(order);
      return json::object();
    };
  };
  orders_ = {
      {"GET /control/requests", [this](const auto&) { return Answer(parts_.log.counts()); }},
      {"GET /control/jmap-requests", [this](const auto&) { return Answer(parts_.log.entries()); }},
      {"GET /control/stream", [this](const auto&) { return stream({}); }},
      {"POST /control/stream", [this](const auto& order) { return stream(order); }},
      {"POST /control/fail", [this](const auto& order) { return fail(order); }},
      {"POST /control/deliver", [this](const auto& order) -> Answer { return deliver(parts_.store, order); }},
      {"POST /control/attachments", doing([this](const auto& order) {
         const auto count = base::JsonReader(order)["count"].wholeNumber().value_or(2000);
         mail::addAttachmentMail(parts_.store, static_cast<int>(std::clamp<std::int64_t>(count, 0, 100'000)));
       })},
      {"POST /control/token",
       [this](const auto&) { return json::object{{"accessToken", parts_.signIn.token()}}; }},
      {"POST /control/expire-token", doing([this](const auto&) { parts_.signIn.expireToken(); })},
      {"POST /control/sign-out", doing([this](const auto&) { parts_.signIn.signOutEverybody(); })},
      {"POST /control/forget-changes", doing([this](const auto&) { parts_.store.forgetChanges(); })},
      {"POST /control/labels-mode", doing([this](const auto& order) {
         parts_.isInLabelsMode = base::JsonReader(order)["on"].boolean().value_or(true);
       })},
      {"POST /control/announcement", doing([this](const auto& order) {
         parts_.announcement = order.empty() ? "" : base::jsonText(order);
       })},
      {"POST /control/reset", [this](const auto&) { return reset(); }},
  };
}

void ControlSurface::handle(http::Exchange& exchange) const {
  const auto carryOut = orders_.find(std::string(exchange.method()) + " " + exchange.path());
  if (exchange.header("Origin") || !base::isLoopbackHost(exchange.host()))
    exchange.refuse(SOUP_STATUS_FORBIDDEN, "Not for web pages.");
  else if (carryOut == orders_.end())
    exchange.refuse(SOUP_STATUS_NOT_FOUND, "No such order.");
  else if (const auto answer = carryOut->second(exchange.jsonBody()))
    exchange.replyJson(*answer);
  else
    exchange.refuse(SOUP_STATUS_BAD_REQUEST, "The order makes no sense.");
}

ControlSurface::Answer ControlSurface::fail(const json::object& given) const {
  const base::JsonReader order(given);
  const std::map<std::string, Fault::Kind> kinds{{"status", Fault::Kind::status},
                                                 {"delay", Fault::Kind::delay},
                                                 {"close", Fault::Kind::close},
                                                 {"silence", Fault::Kind::silence}};
  const auto method = order["method"].string().value_or("");
  const auto path = order["path"].string().value_or("");
  const auto kind = kinds.find(order["kind"].string().value_or("status"));
  const auto count = order["count"].wholeNumber().value_or(1);
  const auto status = order["status"].wholeNumber().value_or(500);
  const auto milliseconds = order["milliseconds"].wholeNumber().value_or(0);
  if ((method.empty() && !path.starts_with('/')) || kind == kinds.end() || count < 1 || status < 200 ||
      status > 599 || milliseconds < 0)
    return std::nullopt;
  parts_.faults.add(method.empty() ? path : method, static_cast<unsigned>(count),
                    {kind->second, std::chrono::milliseconds(milliseconds), static_cast<unsigned>(status),
                     method.empty() ? order["body"].string().value_or("Fault on demand.\n")
                                    : order["type"].string().value_or("serverFail")});
  return json::object();
}

ControlSurface::Answer ControlSurface::stream(const json::object& order) const {
  const auto action = base::JsonReader(order)["action"].string().value_or("");
  const auto listeners = parts_.streams.listeners();
  if (action == "drop")
    parts_.streams.drop();
  else if (action == "terse")
    parts_.streams.setTerse(true);
  else if (!order.empty())
    return std::nullopt;
  return json::object{{"listeners", listeners}};
}

ControlSurface::Answer ControlSurface::reset() const {
  parts_.faults.clear();
  parts_.gate.dropHeld();
  parts_.log = {};
  parts_.streams.setTerse(false);
  parts_.isInLabelsMode = true;
  return json::object();
}

} // namespace ondrel::demo::control
