// How long messages take between page and program, in a real web view. Prints one line of JSON with the
// medians in milliseconds, for bench/run.
#include "async/Scope.h"
#include "async/Signal.h"
#include "platform/WebViewDelegate.h"
#include "platform/linux/Rendering.h"
#include "platform/linux/WebKitViewFactory.h"
#include "platform/linux/glib/GlibEventLoop.h"
#include "platform/linux/glib/Ref.h"

#include <fmt/core.h>
#include <gtk/gtk.h>

#include <algorithm>
#include <chrono>
#include <cstdlib>
#include <vector>

namespace {

using namespace ondrel;
using namespace std::chrono_literals;
using Clock = std::chrono::steady_clock;
using Milliseconds = std::chrono::duration<double, std::milli>;

constexpr int rounds = 2000;
constexpr int warmUpRounds = 100;
constexpr async::Duration deadline = 10s;

// Allows everything and passes on the end of the load and the arrival of messages.
class Listener final : public platform::WebViewDelegate {
 public:
  async::Signal loaded;
  async::Signal received;
  Clock::time_point arrival; // of the last message

  void decidePolicy(const platform::NavigationAction&, platform::PolicyReply reply) override {
    std::move(reply)(platform::NavigationPolicy::allow);
  }
  void decidePolicy(const platform::NavigationResponse&, platform::PolicyReply reply) override {
    std::move(reply)(platform::NavigationPolicy::allow);
  }
  void didCommit() override {}
  void didFinish() override { loaded.send(); }
  void didFail(const platform::WebError& error) override { fail(error.description); }
  void didFailProvisional(const platform::WebError& error) override { fail(error.description); }
  void didBecomeDownload(std::shared_ptr<platform::Download>) override {}
  std::shared_ptr<platform::WebView> createWebView(platform::NewWindowRequest) override { return nullptr; }
  void runAlertPanel(const std::string&, platform::DoneReply) override {}
  void runConfirmPanel(const std::string&, platform::DoneReply) override {}
  void runOpenPanel(const platform::OpenPanelParameters&, platform::FilesReply) override {}
  void didReceiveScriptMessage(const platform::ScriptMessage&) override {
    arrival = Clock::now();
    received.send();
  }
  void didClose() override {}
  void webProcessDidTerminate(bool) override { fail("the web process is gone"); }
  void backForwardListDidChange() override {}
  void urlDidChange() override {}

  [[noreturn]] static void fail(const std::string& what) {
    fmt::print(stderr, "messages: {}\n", what);
    std::exit(1);
  }
};

double median(std::vector<double> values) {
  const auto middle = values.begin() + static_cast<std::ptrdiff_t>(values.size() / 2);
  std::ranges::nth_element(values, middle);
  return *middle;
}

async::Task<double> evaluateAndBack(platform::WebView& view) {
  std::vector<double> times;
  for (int round = -warmUpRounds; round < rounds; ++round) {
    const auto begin = Clock::now();
    const auto result = co_await view.evaluate(fmt::format("({} + 1)", round), std::nullopt, deadline);
    const auto end = Clock::now();
    if (!result || result->to_number<int>() != round + 1)
      Listener::fail("an evaluation gave no result or a wrong one");
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
      Listener::fail("a page could not be told to send a message: " + ordered.error().message);
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
  const bool software = platform::chooseRendering() == platform::Rendering::software;
  gtk_init();
  const glib::GlibEventLoop loop;

  platform::WebKitOptions options;
  options.extensionFolder = ONDREL_EXTENSION_FOLDER;
  options.softwareRendering = software;
  options.ephemeral = true;
  platform::WebKitViewFactory factory(options);
  Listener listener;
  const auto view = factory.make({});
  view->setDelegate(&listener);
  view->addScriptMessageHandler("ondrel");

  auto* window = GTK_WINDOW(gtk_window_new());
  gtk_window_set_child(window, static_cast<GtkWidget*>(view->nativeView().handle));
  gtk_window_present(window);

  async::Scope scope;
  scope.spawn(measure(*view, listener));
  while (scope.active() > 0)
    g_main_context_iteration(nullptr, TRUE);
  view->setDelegate(nullptr);
  gtk_window_destroy(window);
  return 0;
}
