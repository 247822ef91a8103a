#pragma once

#include "jmap/mail/MailRequest.h"

#include <boost/json/object.hpp>

#include <string>

namespace ondrel::jmap {

// The key of a patch (RFC 8620, section 5.3) for a mailbox of an email: true to be in it, null to be not.
std::string membership(const std::string& mailboxId);

// The email as it is by now, with these properties of it; refused where it is no longer there.
async::Task<Result<boost::json::object>> currentEmail(JMAPClient& client, MailAccount account,
                                                      std::string emailId, boost::json::array properties);
// Changes one email. What the server says against it is an error.
async::Task<Result<void>> patchEmail(JMAPClient& client, MailAccount account, std::string emailId,
                                     boost::json::object patch, std::string callId);

} // namespace ondrel::jmap
