#pragma once

#include "base/Log.h"
#include "jmap/protocol/JMAPClient.h"

#include <boost/json/array.hpp>

#include <string>
#include <string_view>

namespace ondrel::jmap {

inline constexpr base::Logger networkLogger("network");

// A method call (RFC 8620, section 3.2), and the envelope of a request that makes one or several.
boost::json::array methodCall(std::string_view method, boost::json::object arguments,
                              std::string_view callId);
boost::json::object jmapRequest(boost::json::array methodCalls, std::string_view capability = mailCapability);
boost::json::object jmapRequest(std::string_view method, boost::json::object arguments,
                                std::string_view callId);
// The value of "#ids" that stands for what the Email/query "q0" of the same request finds.
boost::json::object idsOfQuery();

struct MailAccount {
  JMAPSessionData session;
  std::string id;
};

// The session's mail account. Without one, badResponse after a log line that names the operation. The client
// outlives these tasks.
async::Task<Result<MailAccount>> mailAccount(JMAPClient& client, std::string_view operation);
// Sends it with a token of the moment.
async::Task<Result<JMAPReply>> sendRequest(JMAPClient& client, JMAPSessionData session,
                                           boost::json::object body);
// Likewise, and gives the reply's JSON.
async::Task<Result<boost::json::value>> ask(JMAPClient& client, JMAPSessionData session,
                                            boost::json::object body);

} // namespace ondrel::jmap
