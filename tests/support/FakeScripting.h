#pragma once

#include "async/sleep.h"
#include "platform/desktop/Scripting.h"

#include <set>
#include <string>
#include <utility>

namespace ondrel::support {

class FakeScripting final : public platform::Scripting {
 public:
  void setGetAddressHandler(Handler value) override { handler = std::move(value); }
  // As the bus, never in the same turn.
  async::Task<bool> isRunning(std::string applicationId) override {
    co_await async::nextTurn();
    co_return running.contains(applicationId);
  }

  Handler handler;
  std::set<std::string> running;
};

} // namespace ondrel::support
