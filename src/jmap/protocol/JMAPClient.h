#pragma once

#include "async/Task.h"
#include "jmap/protocol/JMAPError.h"
#include "jmap/protocol/JMAPSessionData.h"

#include <boost/json/object.hpp>
#include <boost/json/value.hpp>

#include <string>
#include <string_view>
#include <vector>

namespace ondrel::jmap {

// A reply that was accepted: status 200 to 299, not empty, no method-level error in it.
struct JMAPReply {
  static constexpr std::size_t longestExcerpt = 4000; // bytes

  std::string body;                 // as it came
  Result<boost::json::value> json;  // the body parsed; an error of kind `malformed` when it is no JSON
  std::vector<std::string> secrets; // of the request, which a server may repeat

  static JMAPReply of(std::string body, std::vector<std::string> secrets = {});
  // For the log, without the secrets: at most so many bytes of the body, or "<N non-UTF8 bytes>" of the whole
  // where these are no text.
  std::string excerpt(std::size_t most = longestExcerpt) const;
  // A text that was read from it, for the log.
  std::string withoutSecrets(std::string_view text) const;
};

// The service's JMAP API as everything above the transport sees it. Each call has the same course:
//
//   session, its account id, token, body; send; read.
//
// Several may be under way at a time. Main thread only.
class JMAPClient {
 public:
  virtual ~JMAPClient() = default;

  // Fetched once and kept.
  virtual async::Task<Result<JMAPSessionData>> fetchSessionData() = 0;
  // Read anew from the signed-in page with each call.
  virtual async::Task<Result<std::string>> currentAccessToken() = 0;
  // Whether nobody is signed in, as far as the page shows; within two seconds. For callers whose own caller
  // would not wait as long as currentAccessToken() does.
  virtual async::Task<bool> isSignInShown() = 0;
  // Posts a body to the session's apiUrl, up to five times. The first attempt goes with this token, each
  // further one with a fresh one.
  virtual async::Task<Result<JMAPReply>> send(JMAPSessionData session, std::string token,
                                              boost::json::object body) = 0;
};

} // namespace ondrel::jmap
