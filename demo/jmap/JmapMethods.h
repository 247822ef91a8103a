#pragma once

#include "demo/jmap/Arguments.h"
#include "demo/mail/MailStore.h"

#include <functional>

namespace ondrel::demo::jmap {

// What the methods of the JMAP surface work on.
struct JmapContext {
  mail::MailStore& store;
  const bool& isInLabelsMode;
  // The type of the error that a call of this method is to end with, on order.
  std::function<std::optional<std::string>(const std::string& method)> orderedError;
};

inline constexpr const char* mailAccountId = "u12345678";
// The account of the user's own preferences, which has no mail.
inline constexpr const char* userAccountId = "u87654321";
inline constexpr std::size_t mostObjectsInGet = 1000;

// RFC 8621, 4, of what is there already: nothing is created or destroyed.
MethodResult emailGet(const JmapContext& context, Arguments& arguments);
MethodResult emailQuery(const JmapContext& context, Arguments& arguments);
MethodResult emailChanges(const JmapContext& context, Arguments& arguments);
MethodResult emailSet(const JmapContext& context, Arguments& arguments);
// RFC 8621, 3 and 2.
MethodResult threadGet(const JmapContext& context, Arguments& arguments);
MethodResult mailboxGet(const JmapContext& context, Arguments& arguments);
// The one "singleton" object of the user's preferences, of the service's own.
MethodResult clientPreferencesGet(const JmapContext& context, Arguments& arguments);

} // namespace ondrel::demo::jmap
