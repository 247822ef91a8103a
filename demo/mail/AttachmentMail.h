#pragma once

#include "demo/mail/MailStore.h"

namespace ondrel::demo::mail {

// Adds so many emails with attachments, newer than all other sample mail, in a mailbox "Files". The newest
// have what is hard: names that are attacks, pictures that break decoders, a file of 50 MB, one that takes
// ten seconds, one in two emails, and a conversation that stays folded. The others have files of every kind.
void addAttachmentMail(MailStore& store, int emails);

} // namespace ondrel::demo::mail
