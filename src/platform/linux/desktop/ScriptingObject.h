#pragma once

#include "async/Scope.h"
#include "platform/desktop/Scripting.h"
#include "platform/linux/desktop/MessageBus.h"

#include <string>

namespace ondrel::platform::desktop {

// The interface org.velmora.Ondrel.Scripting on the session bus, at the application's own object:
// GetAddress() gives a text. Without a bus nobody can ask.
class ScriptingObject final : public Scripting {
 public:
  explicit ScriptingObject(std::string applicationId, BusConnector bus = sessionBus);
  ~ScriptingObject() override;

  void setGetAddressHandler(Handler handler) override { handler_ = std::move(handler); }
  async::Task<bool> isRunning(std::string applicationId) override;

 private:
  async::Task<void> connect(BusConnector bus);

  const std::string applicationId_;
  Handler handler_;
  glib::Ref<GDBusConnection> connection_;
  unsigned registration_ = 0;
  async::Scope scope_;
};

} // namespace ondrel::platform::desktop
