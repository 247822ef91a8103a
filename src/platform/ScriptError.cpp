#include "platform/ScriptError.h"

namespace ondrel::platform {

std::string description(const ScriptError& error) {
  if (!error.message.empty())
    return error.message;
  return error.kind == ScriptError::Kind::timedOut ? "the page did not answer" : "the page has gone";
}

} // namespace ondrel::platform
