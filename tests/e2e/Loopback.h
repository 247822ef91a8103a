#pragma once

#include <string>

namespace ondrel::e2e {

// All that a server of this machine answers to these bytes until it ends the connection.
std::string answerAt(int port, const std::string& bytes);
// A port at which nobody listens.
int freePort();

} // namespace ondrel::e2e
