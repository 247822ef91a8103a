#pragma once

#include "async/Scope.h"
#include "async/Task.h"
#include "async/VirtualEventLoop.h"
#include "async/sleep.h"

#include <gtest/gtest.h>

#include <chrono>
#include <memory>
#include <string>
#include <vector>

namespace ondrel::async {

using namespace std::chrono_literals;
using Lines = std::vector<std::string>;

// Counts the objects that tasks hold, so that a frame that is leaked or destroyed twice fails a test.
class Held {
 public:
  Held() { ++alive; }
  Held(const Held&) { ++alive; }
  ~Held() { --alive; }
  static inline int alive = 0;
};

// Something with work of its own, as a window is.
struct Owner {
  Held held;
  Scope scope;
};

inline Task<void> sleeper(Lines* log, std::string name, Duration duration) {
  const Held held;
  const bool slept = co_await sleep(duration);
  log->push_back(name + (slept ? " slept" : " cancelled"));
}

class AsyncTest : public testing::Test {
 protected:
  ~AsyncTest() override {
    setUnhandledExceptionHandler({});
    owner.reset();
    EXPECT_EQ(Held::alive, 0);
    EXPECT_EQ(loop.pendingTimers(), 0u);
  }
  // How many objects the tasks of the owner hold.
  int held() const { return Held::alive - (owner ? 1 : 0); }
  TaskHandle spawn(Task<void> task) { return owner->scope.spawn(std::move(task)); }

  VirtualEventLoop loop;
  Lines log;
  std::unique_ptr<Owner> owner = std::make_unique<Owner>();
};

} // namespace ondrel::async
