#include "jmap/protocol/JMAPError.h"

#include "base/Translation.h"

namespace ondrel::jmap {

std::string JMAPError::description() const {
  switch (kind) {
  case Kind::navigationFailed:
    return "Navigation failed: " + detail;
  case Kind::notAuthenticated:
    return base::trMark("Fastmail is not signed in.");
  case Kind::noMailAccount:
    return base::trMark("No mail account found in the JMAP session.");
  case Kind::badResponse:
  case Kind::rejected:
    return base::trMark("Unexpected JMAP response format.");
  case Kind::sseStale:
    return base::trMark("SSE connection went stale.");
  case Kind::cancelled:
    return base::trMark("The operation was cancelled.");
  case Kind::refused:
  case Kind::transport:
  case Kind::malformed:
    return detail;
  }
  return detail;
}

std::string JMAPError::inWords() const {
  if (kind == Kind::navigationFailed)
    return base::trFormat("Navigation failed: {}", base::tr(detail.c_str()));
  return base::tr(description().c_str());
}

bool JMAPError::isPassing() const {
  return kind == Kind::transport || kind == Kind::rejected || kind == Kind::navigationFailed ||
         kind == Kind::notAuthenticated;
}

} // namespace ondrel::jmap
