#pragma once

#include <string>

namespace ondrel::jmap {

// Two names of mailboxes are the same to a person: without regard to letters' case, in all scripts, and to
// how accents are encoded.
bool sameMailboxName(const std::string& a, const std::string& b);

} // namespace ondrel::jmap
