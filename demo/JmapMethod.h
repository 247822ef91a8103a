#pragma once

#include "demo/MailStore.h"
#include "demo/MethodFaults.h"

#include <boost/json.hpp>

#include <expected>
#include <string>

namespace ondrel::demo {

// What the methods of the JMAP surface work on.
struct JmapContext {
  MailStore& store;
  MethodFaults& faults;
  const bool& isInLabelsMode;
};

// The arguments of an "error" response, RFC 8620, 3.6.2.
struct MethodError {
  std::string type;
  std::string description = {};
};

using MethodResult = std::expected<boost::json::object, MethodError>;

inline constexpr const char* mailAccountId = "u12345678";
// The account of the user's own preferences, which has no mail.
inline constexpr const char* userAccountId = "u87654321";

inline constexpr const char* coreCapability = "urn:ietf:params:jmap:core";
inline constexpr const char* mailCapability = "urn:ietf:params:jmap:mail";

inline constexpr std::size_t mostCallsInRequest = 32;
inline constexpr std::size_t mostObjectsInGet = 1000;
inline constexpr std::size_t mostObjectsInSet = 1000;
inline constexpr std::size_t mostBytesInRequest = 10'000'000;

} // namespace ondrel::demo
