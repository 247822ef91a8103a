#pragma once

#include "demo/mail/MailStore.h"

namespace ondrel::demo::mail {

// Mail in the archive for what attachments and messages can be: a file of each kind, images inside of
// bodies, a name that is missing, a message without Message-ID, text, subject or sender, one in two
// mailboxes, one in the spam, a draft.
void addSampleFiles(MailStore& store, std::chrono::sys_seconds newest);

} // namespace ondrel::demo::mail
