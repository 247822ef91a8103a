#include "integrations/GetAddressCommand.h"

#include "app/WindowManager.h"
#include "integrations/EmailLinkService.h"

#include <array>
#include <utility>

namespace ondrel::integrations {

namespace {

constexpr std::array linkTools = {"com.cogsciapps.hook", "org.velmora.linker"};
constexpr int scriptErrorNumber = -1750;

} // namespace

GetAddressCommand::GetAddressCommand(platform::Scripting& scripting, EmailLinkService& emailLinks,
                                     app::WindowManager& windowManager)
    : scripting_(scripting), emailLinks_(emailLinks), windowManager_(windowManager) {
  scripting_.setGetAddressHandler(
      [this](platform::ScriptCommandReply reply) { scope_.spawn(perform(std::move(reply))); });
}

GetAddressCommand::~GetAddressCommand() {
  scripting_.setGetAddressHandler(nullptr);
}

// A reply that is dropped answers with nothing.
async::Task<void> GetAddressCommand::perform(platform::ScriptCommandReply reply) {
  bool isToolRunning = false;
  for (const auto* tool : linkTools) {
    const bool runs = co_await scripting_.isRunning(tool);
    isToolRunning = isToolRunning || runs;
  }
  if (!isToolRunning || served_)
    co_return;
  served_ = std::move(reply);
  platform::ScriptCommandResult result;
  if (windowManager_.windows().mainWindowContainsMail()) {
    auto address = co_await emailLinks_.currentEmailAddress();
    if (address)
      result = *std::move(address);
    else
      result = std::unexpected(
          platform::ScriptCommandError{scriptErrorNumber, std::move(address).error().description});
  }
  auto command = *std::exchange(served_, std::nullopt);
  std::move(command)(std::move(result));
}

} // namespace ondrel::integrations
