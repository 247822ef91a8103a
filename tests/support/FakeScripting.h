#pragma once

#include "async/sleep.h"
#include "platform/Scripting.h"

#include <optional>
#include <set>
#include <string>
#include <utility>
#include <vector>

namespace ondrel::support {

// Gives commands as another program does, and keeps their answers.
class FakeScripting final : public platform::Scripting {
 public:
  void setGetAddressHandler(Handler value) override { handler = std::move(value); }
  // As the bus, never in the same turn.
  async::Task<bool> isRunning(std::string applicationId) override {
    co_await async::nextTurn();
    co_return running.contains(applicationId);
  }

  // The number of its answer.
  std::size_t getAddress() {
    const auto number = answers.size();
    answers.emplace_back();
    platform::ScriptCommandReply reply(
        [this, number](platform::ScriptCommandResult result) { answers[number] = std::move(result); }, "");
    if (handler)
      handler(std::move(reply));
    return number;
  }

  Handler handler;
  std::set<std::string> running;
  std::vector<std::optional<platform::ScriptCommandResult>> answers;
};

} // namespace ondrel::support
