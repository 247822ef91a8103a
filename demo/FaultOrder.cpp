#include "demo/FaultOrder.h"

#include "demo/OrderFields.h"

#include <algorithm>

namespace ondrel::demo {

namespace json = boost::json;

namespace {

constexpr std::pair<std::string_view, Fault::Kind> kinds[] = {
    {"status", Fault::Kind::status},   {"close", Fault::Kind::close},
    {"silence", Fault::Kind::silence}, {"delay", Fault::Kind::delay},
    {"body", Fault::Kind::body},       {"empty", Fault::Kind::body},
    {"html", Fault::Kind::body},       {"invalid-utf8", Fault::Kind::body},
    {"huge", Fault::Kind::huge},       {"truncated", Fault::Kind::truncated},
    {"cut", Fault::Kind::cut},         {"redirect", Fault::Kind::redirect},
};

} // namespace

std::optional<Fault> faultOf(const json::object& order) {
  const auto name = textOr(order, "kind", "status");
  const auto* known = std::ranges::find(kinds, name, &std::pair<std::string_view, Fault::Kind>::first);
  if (known == std::end(kinds))
    return std::nullopt;
  Fault fault;
  fault.kind = known->second;
  const bool isStatus = fault.kind == Fault::Kind::status;
  const bool isRedirect = fault.kind == Fault::Kind::redirect;
  const auto status = numberOr(order, "status", isStatus ? 500 : isRedirect ? 307 : 200);
  const auto milliseconds = numberOr(order, "milliseconds", 0);
  fault.location = textOr(order, "location", "");
  const bool isLocation = fault.location.starts_with("http://") || fault.location.starts_with("/");
  if (status < 200 || status > 599 || milliseconds < 0 || milliseconds > 600'000 ||
      (isRedirect && (!isLocation || fault.location.find_first_of("\r\n") != std::string::npos))) {
    return std::nullopt;
  }
  fault.status = static_cast<unsigned>(status);
  fault.delay = std::chrono::milliseconds(milliseconds);
  if (name == "body") {
    fault.body = textOr(order, "body", "");
  } else if (name == "html") {
    fault.contentType = "text/html; charset=utf-8";
    fault.body = "<!doctype html><title>Sorry</title><p>Something went wrong.</p>\n";
  } else if (name == "invalid-utf8") {
    fault.body = "{\"methodResponses\":[[\"Email/get\",{\"state\":\"\xff\xfe\xc0\",\"list\":[]},\"0\"]]}";
  }
  return fault;
}

} // namespace ondrel::demo
