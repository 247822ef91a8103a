#include "demo/ControlSurface.h"

#include "demo/Delivery.h"
#include "demo/FaultOrder.h"
#include "demo/OrderFields.h"

namespace ondrel::demo {

namespace json = boost::json;

namespace {

constexpr std::int64_t mostFaults = 1'000'000;

json::object orderIn(const Exchange& exchange) {
  return exchange.jsonBody().value_or(json::object());
}

// Bytes that JSON can't carry come as base64.
std::string bytesOf(const json::object& order) {
  auto bytes = textOr(order, "data", "");
  const auto encoded = textOr(order, "base64", "");
  gsize size = 0;
  const StringPtr decoded(reinterpret_cast<char*>(g_base64_decode(encoded.c_str(), &size)));
  return bytes.append(decoded.get(), size);
}

} // namespace

void ControlSurface::handle(Exchange& exchange) {
  const auto host = exchange.host();
  if (exchange.header("Origin") || (host != "localhost" && host != "127.0.0.1" && host != "[::1]"))
    exchange.refuse(SOUP_STATUS_FORBIDDEN, "Not for web pages.");
  else if (exchange.method() == "GET")
    get(exchange);
  else if (exchange.method() == "POST")
    post(exchange);
  else
    exchange.refuse(SOUP_STATUS_METHOD_NOT_ALLOWED, "Questions are GET, orders are POST.");
}

void ControlSurface::get(Exchange& exchange) const {
  const auto path = exchange.path();
  if (path == "/control/requests")
    exchange.replyJson(requestCounts());
  else if (path == "/control/jmap-requests")
    exchange.replyJson(parts_.requestLog.entries());
  else if (path == "/control/stream")
    exchange.replyJson(json::object{{"listeners", parts_.streams.listeners()}});
  else
    exchange.refuse(SOUP_STATUS_METHOD_NOT_ALLOWED, "Orders are POST.");
}

void ControlSurface::post(Exchange& exchange) {
  constexpr std::pair<const char*, void (ControlSurface::*)(Exchange&)> orders[] = {
      {"/control/fail", &ControlSurface::fail},
      {"/control/fail-method", &ControlSurface::failMethod},
      {"/control/deliver", &ControlSurface::deliverMail},
      {"/control/token", &ControlSurface::token},
      {"/control/stream", &ControlSurface::stream},
      {"/control/reset", &ControlSurface::reset},
  };
  const auto path = exchange.path();
  for (const auto& [name, carryOut] : orders) {
    if (path == name) {
      (this->*carryOut)(exchange);
      return;
    }
  }
  if (path == "/control/sign-out") {
    parts_.signIn.signOutEverybody();
    parts_.tokens.expire();
  } else if (path == "/control/expire-token") {
    parts_.tokens.expire();
  } else if (path == "/control/forget-changes") {
    parts_.store.forgetChanges();
  } else if (path == "/control/labels-mode") {
    parts_.isInLabelsMode = flagOr(orderIn(exchange), "on", true);
  } else {
    exchange.refuse(SOUP_STATUS_NOT_FOUND, "No such order.");
    return;
  }
  exchange.replyJson(json::object());
}

void ControlSurface::fail(Exchange& exchange) {
  const auto order = orderIn(exchange);
  const auto path = textOr(order, "path", "");
  const auto count = numberOr(order, "count", 1);
  const auto fault = faultOf(order);
  if (!path.starts_with('/') || count < 1 || count > mostFaults || !fault) {
    exchange.refuse(SOUP_STATUS_BAD_REQUEST, "Expected path, count, kind and what the kind needs.");
    return;
  }
  parts_.gate.plan().add(path, static_cast<unsigned>(count), *fault);
  exchange.replyJson(json::object());
}

void ControlSurface::failMethod(Exchange& exchange) {
  const auto order = orderIn(exchange);
  const auto method = textOr(order, "method", "");
  const auto count = numberOr(order, "count", 1);
  if (method.empty() || count < 1 || count > mostFaults) {
    exchange.refuse(SOUP_STATUS_BAD_REQUEST, "Expected method, and perhaps type and count.");
    return;
  }
  parts_.methodFaults.add(method, textOr(order, "type", "serverFail"), static_cast<unsigned>(count));
  exchange.replyJson(json::object());
}

void ControlSurface::deliverMail(Exchange& exchange) {
  const auto delivered = deliver(parts_.store, orderIn(exchange));
  if (delivered)
    exchange.replyJson(*delivered);
  else
    exchange.refuse(SOUP_STATUS_BAD_REQUEST, delivered.error());
}

void ControlSurface::token(Exchange& exchange) {
  exchange.replyJson(json::object{{"accessToken", parts_.tokens.current()}});
}

void ControlSurface::stream(Exchange& exchange) {
  const auto order = orderIn(exchange);
  const auto action = textOr(order, "action", "");
  const auto listeners = parts_.streams.listeners();
  if (action == "drop" || action == "reset") {
    parts_.streams.drop(action == "reset");
  } else if (action == "silence" || action == "resume") {
    parts_.streams.setSilent(action == "silence");
  } else if (action == "terse") {
    parts_.streams.setTerse(true);
  } else if (action == "raw") {
    parts_.streams.sendRaw(bytesOf(order));
  } else {
    exchange.refuse(SOUP_STATUS_BAD_REQUEST, "Expected action: drop, reset, silence, resume, terse or raw.");
    return;
  }
  exchange.replyJson(json::object{{"listeners", listeners}});
}

void ControlSurface::reset(Exchange& exchange) {
  parts_.gate.plan().clear();
  parts_.gate.dropHeld();
  parts_.counters.byHostAndPath.clear();
  parts_.requestLog.clear();
  parts_.methodFaults.clear();
  parts_.streams.setSilent(false);
  parts_.streams.setTerse(false);
  parts_.isInLabelsMode = true;
  exchange.replyJson(json::object());
}

json::object ControlSurface::requestCounts() const {
  json::object hosts;
  for (const auto& [host, paths] : parts_.counters.byHostAndPath) {
    auto& counts = hosts[host].emplace_object();
    for (const auto& [path, count] : paths)
      counts[path] = count;
  }
  return hosts;
}

} // namespace ondrel::demo
