#include "support/WebKitTest.h"

#include "support/Complaints.h"
#include "support/MainLoop.h"

#include <adwaita.h>
#include <boost/json/serialize.hpp>

#include <cstdlib>
#include <future>

namespace ondrel::tests {

void WebKitTest::SetUpTestSuite() {
  static const bool once = [] {
    support::failOnComplaints();
    // The toolkit notes the printing of a file, with these names, among the recent files; not among the
    // user's own.
    g_set_prgname("ondrel-tests");
    g_set_application_name("Ondrel tests");
    g_setenv("XDG_DATA_HOME", (std::filesystem::temp_directory_path() / "ondrel-tests-data").c_str(), TRUE);
    if (!gtk_init_check())
      return false;
    adw_init(); // for its style
    return true;
  }();
  ASSERT_TRUE(once) << "these tests need a display";
}

void WebKitTest::SetUp() {
  glib::CString made(g_dir_make_tmp("ondrel-webkit-XXXXXX", nullptr));
  folder_ = made.get();
  factory_ = std::make_unique<platform::webkit::WebKitViewFactory>(options());
}

platform::webkit::WebKitOptions WebKitTest::options() const {
  platform::webkit::WebKitOptions options;
  options.dataFolder = folder_ / "data";
  options.cacheFolder = folder_ / "cache";
  options.extensionFolder = ONDREL_EXTENSION_FOLDER;
  options.softwareRendering = true;
  return options;
}

void WebKitTest::TearDown() {
  for (const auto& window : windows_)
    gtk_window_destroy(window.get());
  if (view_)
    view_->setDelegate(nullptr);
  view_.reset();
  runFor(50ms);
  factory_.reset();
  std::error_code ignored;
  std::filesystem::remove_all(folder_, ignored);
}

bool WebKitTest::waitFor(const std::function<bool()>& predicate, std::chrono::milliseconds limit) {
  return support::runUntil(predicate, limit);
}

void WebKitTest::runFor(std::chrono::milliseconds time) {
  support::runFor(time);
}

bool WebKitTest::waitForEvent(std::string_view event, long times) {
  return waitFor([&] { return delegate_.count(event) >= times; });
}

bool WebKitTest::useMouse(const std::string& actions) {
  const auto command = "xdotool " + actions;
  const auto status = std::async(std::launch::async, [&] { return std::system(command.c_str()); });
  return waitFor([&] { return status.wait_for(0s) == std::future_status::ready; });
}

bool WebKitTest::waitForMessages(std::size_t number) {
  return waitFor([&] { return delegate_.messages.size() >= number; });
}

std::shared_ptr<WebView> WebKitTest::makeView(RecordingDelegate& delegate, const Scripts& scripts) {
  auto made = factory_->make(scripts);
  made->setDelegate(&delegate);
  made->addScriptMessageHandler("ondrel");
  return made;
}

void WebKitTest::show(WebView& webView) {
  auto window = glib::share(GTK_WINDOW(gtk_window_new()));
  gtk_window_set_default_size(window.get(), 600, 400);
  gtk_window_set_child(window.get(), static_cast<GtkWidget*>(webView.nativeView().handle));
  gtk_window_present(window.get());
  windows_.push_back(std::move(window));
}

void WebKitTest::useScripts(Scripts scripts) {
  scripts_ = std::move(scripts);
  if (view_)
    view_->setDelegate(nullptr);
  view_.reset();
}

WebView& WebKitTest::view() {
  if (!view_) {
    view_ = makeView(delegate_, scripts_);
    show(*view_);
  }
  return *view_;
}

void WebKitTest::loadUrl(const std::string& url) {
  const auto finished = delegate_.count("finish");
  view().load(url);
  ASSERT_TRUE(waitForEvent("finish", finished + 1)) << "not loaded: " << url;
}

void WebKitTest::loadHtml(const std::string& html) {
  server_.serve("/page", html);
  loadUrl(server_.url("/page"));
}

ScriptResult WebKitTest::evaluate(std::string source, std::optional<FrameInfo> frame,
                                  async::Duration deadline) {
  auto result = run(view().evaluate(std::move(source), std::move(frame), deadline));
  return result ? std::move(*result)
                : std::unexpected(ScriptError{ScriptError::Kind::timedOut, "no answer at all"});
}

std::string WebKitTest::evaluateToText(std::string source, std::optional<FrameInfo> frame) {
  const auto result = evaluate(std::move(source), std::move(frame));
  if (result)
    return boost::json::serialize(*result);
  constexpr const char* kinds[] = {"exception", "unsupportedValue", "gone", "timedOut"};
  return kinds[static_cast<int>(result.error().kind)];
}

std::string WebKitTest::posting(const std::string& expression) {
  return "<script>window.webkit.messageHandlers.ondrel.postMessage(" + expression + ")</script>";
}

const ScriptMessage& WebKitTest::messageWith(const std::string& body) {
  static const ScriptMessage none;
  const auto found = std::ranges::find_if(
      delegate_.messages, [&](const auto& message) { return message.body == boost::json::value(body); });
  if (found != delegate_.messages.end())
    return *found;
  ADD_FAILURE() << "no message " << body;
  return none;
}

} // namespace ondrel::tests
