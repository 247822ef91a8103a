#pragma once

#include "async/Scope.h"
#include "platform/linux/glib/GlibEventLoop.h"
#include "platform/linux/webkit/WebKitView.h"
#include "platform/linux/webkit/WebKitViewFactory.h"
#include "support/LogCapture.h"
#include "support/PageServer.h"
#include "support/RecordingDelegate.h"

#include <gtest/gtest.h>

#include <chrono>
#include <filesystem>

namespace ondrel::tests {

using namespace std::chrono_literals;

// A web view in a window on a real display, a web server, and verbs that run the main loop until something
// has happened. Warnings and criticals of GLib fail the test.
class WebKitTest : public testing::Test {
 protected:
  using Scripts = std::vector<std::shared_ptr<const UserScript>>;

  static void SetUpTestSuite();
  platform::webkit::WebKitOptions options() const; // of this test's web views
  void SetUp() override;
  void TearDown() override;

  // True as soon as the predicate holds; false after the limit.
  bool waitFor(const std::function<bool()>& predicate, std::chrono::milliseconds limit = 10s);
  void runFor(std::chrono::milliseconds time);
  bool waitForEvent(std::string_view event, long times = 1);
  bool waitForMessages(std::size_t number);
  // Real input, as xdotool takes it: the engine ignores the modifiers of events that a script makes.
  bool useMouse(const std::string& actions);

  template <class T>
  std::optional<T> run(async::Task<T> task) {
    std::optional<T> result;
    async::Scope scope;
    scope.spawn(keep(std::move(task), result));
    waitFor([&] { return result.has_value(); });
    return result;
  }

  // The web view and its window are made by the first use.
  WebView& view();
  void useScripts(Scripts scripts); // by the next web view: the present one goes
  std::shared_ptr<WebView> makeView(RecordingDelegate& delegate, const Scripts& scripts = {});
  void show(WebView& webView);
  void loadUrl(const std::string& url); // and waits until it has finished
  void loadHtml(const std::string& html);
  ScriptResult evaluate(std::string source, std::optional<FrameInfo> frame = {},
                        async::Duration deadline = 5s);
  std::string evaluateToText(std::string source, std::optional<FrameInfo> frame = {});
  // A program in the page that reports to the program under a name.
  static std::string posting(const std::string& expression);
  // The only message with this body; a test failure if there is none.
  const ScriptMessage& messageWith(const std::string& body);

  glib::GlibEventLoop loop_;
  support::LogCapture log_;
  support::PageServer server_;
  std::filesystem::path folder_; // of this test alone, removed behind it
  std::unique_ptr<platform::webkit::WebKitViewFactory> factory_;
  RecordingDelegate delegate_;
  std::shared_ptr<WebView> view_;

 private:
  template <class T>
  static async::Task<void> keep(async::Task<T> task, std::optional<T>& result) {
    result = co_await std::move(task);
  }

  Scripts scripts_;
  std::vector<glib::Ref<GtkWindow>> windows_;
};

} // namespace ondrel::tests
