#pragma once

#include "demo/jmap/JmapMethods.h"

#include <string>
#include <string_view>

namespace ondrel::demo::jmap {

inline constexpr const char* coreCapability = "urn:ietf:params:jmap:core";
inline constexpr const char* mailCapability = "urn:ietf:params:jmap:mail";
// The service's own one, of the user's preferences.
std::string userCapability(std::uint16_t webPort);

// An answer of the API resource: the Response object of RFC 8620, 3.4, or problem details.
struct JmapAnswer {
  unsigned status = 200;
  boost::json::object body;
};

// Carries out the method calls of one request, one after the other.
JmapAnswer answerJmap(const JmapContext& context, std::uint16_t webPort, std::string_view contentType,
                      std::string_view body);

} // namespace ondrel::demo::jmap
