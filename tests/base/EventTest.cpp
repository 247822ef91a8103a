#include "base/Observable.h"
#include "base/Reply.h"

#include <gtest/gtest.h>

#include <optional>
#include <string>
#include <vector>

namespace ondrel::base {
namespace {

TEST(Event, SubscribersMayComeAndGoDuringEmission) {
  std::vector<int> calls;
  Event<> event;
  Subscription second;
  Subscription late;
  auto first = event.subscribe([&] {
    calls.push_back(1);
    second.reset();
    late = event.subscribe([&] { calls.push_back(3); });
  });
  second = event.subscribe([&] { calls.push_back(2); });
  event.emit();
  EXPECT_EQ(calls, (std::vector{1})) << "the second was gone before its turn, the late one came after";
  first.reset();
  event.emit();
  EXPECT_EQ(calls, (std::vector{1, 3}));
}

TEST(Event, MayDieWhileItIsEmittedAndBeforeItsSubscriptions) {
  auto event = std::make_unique<Event<>>();
  int calls = 0;
  const auto first = event->subscribe([&] {
    ++calls;
    event.reset();
  });
  const auto second = event->subscribe([&] { ++calls; });
  event->emit();
  EXPECT_EQ(event, nullptr);
  EXPECT_EQ(calls, 2);
}

TEST(Observable, WakesOnlyOnChange) {
  Observable<std::string> field{std::string("a")};
  int wakes = 0;
  auto subscription = field.observe([&] { ++wakes; });
  field.set("a");
  EXPECT_EQ(wakes, 0);
  field.set("b");
  EXPECT_EQ(wakes, 1);
  EXPECT_EQ(*field, "b");
  subscription.reset();
  field.set("c");
  EXPECT_EQ(wakes, 1);
}

TEST(Reply, AnswersExactlyOnce) {
  std::vector<int> answers;
  const auto make = [&] { return Reply<int>([&](int value) { answers.push_back(value); }, -1); };
  {
    auto dropped = make();
  }
  {
    std::move(make())(7);
  }
  {
    auto moved = make();
    auto target = std::move(moved);
    std::move(target)(8);
  }
  EXPECT_EQ(answers, (std::vector{-1, 7, 8}));
}

} // namespace
} // namespace ondrel::base
