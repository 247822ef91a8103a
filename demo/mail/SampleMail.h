#pragma once

#include "demo/mail/MailStore.h"

namespace ondrel::demo::mail {

// Fills an empty store with the same mail at each start: a handful of conversations written by hand (see
// SampleConversations.h), then a few thousand made from a list of sentences, then one of each kind of file.
void fillWithSampleMail(MailStore& store);

// The user, as in the From field of what is sent.
Address demoUser();
// A copy of one of the sample files under a blob id of its own.
Attachment attachSample(MailStore& store, const std::string& sampleFile, const std::string& name);

} // namespace ondrel::demo::mail
