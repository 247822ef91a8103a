#include "jmap/protocol/JMAPError.h"

namespace ondrel::jmap {

std::string JMAPError::description() const {
  switch (kind) {
  case Kind::navigationFailed:
    return "Navigation failed: " + detail;
  case Kind::notAuthenticated:
    return "Fastmail is not signed in.";
  case Kind::noMailAccount:
    return "No mail account found in the JMAP session.";
  case Kind::badResponse:
  case Kind::rejected:
    return "Unexpected JMAP response format.";
  case Kind::sseStale:
    return "SSE connection went stale.";
  case Kind::cancelled:
    return "The operation was cancelled.";
  case Kind::refused:
  case Kind::transport:
  case Kind::malformed:
    return detail;
  }
  return detail;
}

bool JMAPError::isPassing() const {
  return kind == Kind::transport || kind == Kind::rejected || kind == Kind::navigationFailed ||
         kind == Kind::notAuthenticated;
}

} // namespace ondrel::jmap
