#pragma once

#include "jmap/protocol/JMAPError.h"

#include <boost/json/value.hpp>

#include <map>
#include <optional>
#include <string>
#include <string_view>

namespace ondrel::jmap {

inline constexpr std::string_view coreCapability = "urn:ietf:params:jmap:core";
inline constexpr std::string_view mailCapability = "urn:ietf:params:jmap:mail";

// What the program uses of the session resource (RFC 8620, section 2). Addresses are absolute.
struct JMAPSessionData {
  std::string apiUrl;
  std::string eventSourceUrl;                         // a URI template (RFC 6570, level 1)
  std::string downloadUrl;                            // likewise
  std::map<std::string, std::string> primaryAccounts; // account ids by capability

  // Decodes a reply's JSON (`JMAPReply::json`), or passes its error on. Servers may give relative addresses:
  // they are taken as seen from the resource's own. A missing key or one of another type is an error of kind
  // `malformed`.
  static Result<JMAPSessionData> decode(const Result<boost::json::value>& document,
                                        std::string_view resourceUrl);

  bool operator==(const JMAPSessionData&) const = default;
};

// The primary account for mail; absent where the session has none.
std::optional<std::string> mailAccountId(const JMAPSessionData& session);
// An account id as the web application writes it into addresses: without one leading "u".
std::string accountParameter(std::string_view accountId);

} // namespace ondrel::jmap
