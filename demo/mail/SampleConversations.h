#pragma once

#include "demo/mail/MailStore.h"

namespace ondrel::demo::mail {

// The conversations at the top of the inbox, each there for something that a mail can hold: several
// messages, a very long thread, frames, attachments with harmless and with hostile names, links that
// pretend to be others. The newest comes first.
void addSampleConversations(MailStore& store, std::chrono::sys_seconds newest);

} // namespace ondrel::demo::mail
