#pragma once

#include <expected>
#include <string>

namespace ondrel::jmap {

// Why a JMAP operation gave nothing. description() is for the log and for assistants, and holds nothing of a
// request.
struct JMAPError {
  enum class Kind {
    navigationFailed, // the hidden page can't be loaded; detail says why
    notAuthenticated,
    noMailAccount,
    badResponse, // a method-level error, or an answer of another shape than expected
    rejected,    // the server says no to the request as a whole, or for the moment
    refused,     // the server says no to one change; its reason, in detail
    sseStale,
    transport, // the network's error, in detail
    malformed, // a reply that can't be read; the parser's error, in detail
    cancelled,
  };

  Kind kind = Kind::badResponse;
  std::string detail;

  std::string description() const;
  std::string inWords() const; // the same for people
  // Whether the fault lies on the way to the answer, so that the same question may be answered later.
  bool isPassing() const;
  bool operator==(const JMAPError&) const = default;

  static JMAPError navigationFailed(std::string reason) {
    return {Kind::navigationFailed, std::move(reason)};
  }
  static JMAPError notAuthenticated() { return {Kind::notAuthenticated, {}}; }
  static JMAPError noMailAccount() { return {Kind::noMailAccount, {}}; }
  static JMAPError badResponse() { return {Kind::badResponse, {}}; }
  static JMAPError rejected() { return {Kind::rejected, {}}; }
  static JMAPError refused(std::string reason) { return {Kind::refused, std::move(reason)}; }
  static JMAPError sseStale() { return {Kind::sseStale, {}}; }
  static JMAPError cancelled() { return {Kind::cancelled, {}}; }
};

template <class T>
using Result = std::expected<T, JMAPError>;

} // namespace ondrel::jmap
