#pragma once

#include "async/Scope.h"
#include "platform/desktop/Scripting.h"

#include <optional>

namespace ondrel::app {
class WindowManager;
}

namespace ondrel::integrations {

class EmailLinkService;

// Gives link tools the address of the message that is shown. Served only while one of them runs, and one at a
// time: a further command meanwhile gets nothing. Main thread only.
class GetAddressCommand {
 public:
  // All outlive it.
  GetAddressCommand(platform::Scripting& scripting, EmailLinkService& emailLinks,
                    app::WindowManager& windowManager);
  ~GetAddressCommand();

 private:
  async::Task<void> perform(platform::ScriptCommandReply reply);

  platform::Scripting& scripting_;
  EmailLinkService& emailLinks_;
  app::WindowManager& windowManager_;
  std::optional<platform::ScriptCommandReply> served_;
  async::Scope scope_;
};

} // namespace ondrel::integrations
