#include "demo/ControlSurface.h"

#include "demo/SampleMail.h"

#include <boost/json.hpp>

namespace ondrel::demo {

namespace json = boost::json;

namespace {

std::string textOr(const json::object& object, std::string_view key, std::string otherwise) {
  const auto* value = object.if_contains(key);
  return value && value->is_string() ? std::string(value->get_string()) : otherwise;
}

std::int64_t numberOr(const json::object& object, std::string_view key, std::int64_t otherwise) {
  const auto* value = object.if_contains(key);
  return value && value->is_int64() ? value->get_int64() : otherwise;
}

std::optional<Fault> faultOf(const json::object& order) {
  const auto kind = textOr(order, "kind", "status");
  const auto status = numberOr(order, "status", 500);
  const auto milliseconds = numberOr(order, "milliseconds", 0);
  if (status < 200 || status > 599 || milliseconds < 0 || milliseconds > 600'000) {
    return std::nullopt;
  }
  if (kind == "status") {
    return Fault{Fault::Kind::Status, static_cast<unsigned>(status), {}};
  }
  if (kind == "close") {
    return Fault{Fault::Kind::Close, 0, {}};
  }
  if (kind == "silence") {
    return Fault{Fault::Kind::Silence, 0, {}};
  }
  if (kind == "delay") {
    return Fault{Fault::Kind::Delay, 0, std::chrono::milliseconds(milliseconds)};
  }
  return std::nullopt;
}

} // namespace

void ControlSurface::handle(Exchange& exchange) {
  const auto host = exchange.host();
  if (exchange.header("Origin") || (host != "localhost" && host != "127.0.0.1" && host != "[::1]")) {
    exchange.refuse(SOUP_STATUS_FORBIDDEN, "Not for web pages.");
    return;
  }
  const auto path = exchange.path();
  if (exchange.method() == "GET" && path == "/control/requests") {
    requests(exchange);
    return;
  }
  if (exchange.method() != "POST") {
    exchange.refuse(SOUP_STATUS_METHOD_NOT_ALLOWED, "Orders are POST.");
    return;
  }
  if (path == "/control/fail") {
    fail(exchange);
  } else if (path == "/control/deliver") {
    deliver(exchange);
  } else if (path == "/control/sign-out") {
    signIn_.signOutEverybody();
    exchange.replyJson(json::object());
  } else if (path == "/control/reset") {
    gate_.plan().clear();
    gate_.dropHeld();
    counters_.byHostAndPath.clear();
    exchange.replyJson(json::object());
  } else {
    exchange.refuse(SOUP_STATUS_NOT_FOUND, "No such order.");
  }
}

void ControlSurface::fail(Exchange& exchange) {
  const auto order = exchange.jsonBody().value_or(json::object());
  const auto path = textOr(order, "path", "");
  const auto count = numberOr(order, "count", 1);
  const auto fault = faultOf(order);
  if (!path.starts_with('/') || count < 1 || count > 1'000'000 || !fault) {
    exchange.refuse(SOUP_STATUS_BAD_REQUEST,
                    "Expected path, count, kind and, by kind, status or milliseconds.");
    return;
  }
  gate_.plan().add(path, static_cast<unsigned>(count), *fault);
  exchange.replyJson(json::object());
}

void ControlSurface::deliver(Exchange& exchange) {
  const auto order = exchange.jsonBody().value_or(json::object());
  Email email;
  email.id = store_.newEmailId();
  email.threadId = textOr(order, "threadId", "");
  if (store_.thread(email.threadId).empty()) {
    email.threadId = store_.newThreadId();
  }
  email.messageId = email.id + "@mail.example.org";
  email.subject = textOr(order, "subject", "A new message");
  email.from = {textOr(order, "fromName", "Nadia Okafor"),
                textOr(order, "fromEmail", "nadia.okafor@example.org")};
  email.to = {demoUser()};
  email.receivedAt = std::chrono::floor<std::chrono::seconds>(std::chrono::system_clock::now());
  email.mailboxId = "inbox";
  email.unread = true;
  email.html = "<p>" + escapeHtml(textOr(order, "text", "Delivered a moment ago.")) + "</p>";
  const auto& delivered = store_.add(std::move(email));
  exchange.replyJson(json::object{{"emailId", delivered.id}, {"threadId", delivered.threadId}});
}

void ControlSurface::requests(Exchange& exchange) const {
  json::object hosts;
  for (const auto& [host, paths] : counters_.byHostAndPath) {
    auto& counts = hosts[host].emplace_object();
    for (const auto& [path, count] : paths) {
      counts[path] = count;
    }
  }
  exchange.replyJson(hosts);
}

} // namespace ondrel::demo
