#pragma once

#include "async/Task.h"
#include "base/Reply.h"

#include <expected>
#include <functional>
#include <string>

namespace ondrel::platform {

struct ScriptCommandError {
  int number = 0;
  std::string text;

  bool operator==(const ScriptCommandError&) const = default;
};

// What a script command gives: a text, empty where there is nothing to tell.
using ScriptCommandResult = std::expected<std::string, ScriptCommandError>;
// Whoever gave the command waits for it. Dropped, it answers with nothing.
using ScriptCommandReply = base::Reply<ScriptCommandResult>;

// What other programs of the session may ask of this one by a command. Main thread only.
class Scripting {
 public:
  virtual ~Scripting() = default;

  // Takes the command that asks for the address of what is shown; without a handler it is answered with
  // nothing.
  using Handler = std::function<void(ScriptCommandReply)>;
  virtual void setGetAddressHandler(Handler handler) = 0;
  // An application of that id runs in this session.
  virtual async::Task<bool> isRunning(std::string applicationId) = 0;
};

} // namespace ondrel::platform
