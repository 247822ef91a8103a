// How long messages take between page and program, in a real web view. Prints one line of JSON with the
// medians in milliseconds, for bench/run.
#include "EngineWindow.h"
#include "PageDelegate.h"

#include <fmt/core.h>

#include <vector>

namespace {

using namespace ondrel;
using namespace ondrel::bench;
using namespace std::chrono_literals;

constexpr int rounds = 2000;
constexpr int warmUpRounds = 100;
constexpr async::Duration deadline = 10s;

class Listener final : public PageDelegate {
 public:
  async::Signal received;
  Clock::time_point arrival; // of the last message

  void didReceiveScriptMessage(const platform::ScriptMessage&) override {
    arrival = Clock::now();
    received.send();
  }
};

async::Task<double> evaluateAndBack(platform::WebView& view) {
  std::vector<double> times;
  for (int round = -warmUpRounds; round < rounds; ++round) {
    const auto begin = Clock::now();
    const auto result = co_await view.evaluate(fmt::format("({} + 1)", round), std::nullopt, deadline);
    const auto end = Clock::now();
    if (!result || result->to_number<int>() != round + 1)
      fail("an evaluation gave no result or a wrong one");
    if (round >= 0)
      times.push_back(Milliseconds(end - begin).count());
  }
  co_return median(std::move(times));
}

// The clocks of pages are too coarse to time one message: the program orders each one and takes the whole
// way, there and back, so that the message alone took less.
async::Task<double> orderAndMessage(platform::WebView& view, Listener& listener) {
  std::vector<double> times;
  for (int round = -warmUpRounds; round < rounds; ++round) {
    const auto begin = Clock::now();
    const auto ordered = co_await view.evaluate(
        fmt::format("window.webkit.messageHandlers.ondrel.postMessage({{round: {}}}), null", round),
        std::nullopt, deadline);
    if (!ordered)
      fail("a page could not be told to send a message: " + ordered.error().message);
    co_await listener.received.wait();
    if (round >= 0)
      times.push_back(Milliseconds(listener.arrival - begin).count());
  }
  co_return median(std::move(times));
}

async::Task<void> measure(platform::WebView& view, Listener& listener) {
  view.load("data:text/html,<!doctype html><title>Messages</title><p>Messages</p>");
  co_await listener.loaded.wait();
  const auto evaluation = co_await evaluateAndBack(view);
  const auto message = co_await orderAndMessage(view, listener);
  fmt::print("{{\"evaluateAndBack\": {:.4f}, \"orderAndMessage\": {:.4f}}}\n", evaluation, message);
}

} // namespace

int main() {
  EngineWindow window;
  Listener listener;
  const auto view = window.factory().make({});
  view->setDelegate(&listener);
  view->addScriptMessageHandler("ondrel");
  window.show(static_cast<GtkWidget*>(view->nativeView().handle));
  runToEnd(measure(*view, listener));
  view->setDelegate(nullptr);
  return 0;
}
