#pragma once

#include "async/EventLoop.h"
#include "async/Future.h"
#include "async/Timer.h"
#include "async/sleep.h"
#include "platform/Download.h"
#include "platform/PageFinder.h"
#include "platform/WebView.h"
#include "platform/WebViewDelegate.h"

#include <cstdlib>
#include <functional>
#include <memory>
#include <optional>
#include <set>
#include <string>
#include <vector>

namespace ondrel::support {

// As the engine's: answers with later turns, once all that was asked for has been answered, and finds
// whatever the page is said to have.
class FakePageFinder final : public platform::PageFinder {
 public:
  void find(const std::string& text) override { ask("find " + text); }
  void findNext() override { ask("next"); }
  void findPrevious() override { ask("previous"); }
  void finish() override { calls.push_back("finish"); }

  std::vector<std::string> calls;
  unsigned matches = 0;
  bool hangs = false; // nothing is answered

 private:
  void ask(std::string call) {
    calls.push_back(std::move(call));
    ++unanswered_;
    async::EventLoop::current().post([weak = std::weak_ptr(alive_), this] {
      if (weak.lock() && !hangs && --unanswered_ == 0)
        found.emit(matches);
    });
  }

  std::shared_ptr<bool> alive_ = std::make_shared<bool>();
  int unanswered_ = 0;
};

// A web view that records what it is asked and says what the test wants.
class FakeWebView final : public platform::WebView, public std::enable_shared_from_this<FakeWebView> {
 public:
  void setDelegate(platform::WebViewDelegate* value) override { delegate = value; }
  void addScriptMessageHandler(const std::string& name) override {
    if (!handlers.insert(name).second)
      std::abort(); // a second registration is a programming error of the caller
  }
  void removeScriptMessageHandler(const std::string& name) override { handlers.erase(name); }
  void load(const std::string& url) override {
    loads.push_back(url);
    goTo(url);
    if (commitsAtOnce)
      commit();
    else if (commitsByItself)
      commit_ = async::Timer(std::chrono::milliseconds(1), [this] { commit(); });
  }
  void loadHTML(const std::string& html) override { documents.push_back(html); }
  void reload() override { ++reloads; }
  // The engine tells of it as of a load that was cancelled, later.
  void stopLoading() override {
    ++stops;
    async::EventLoop::current().post([weak = weak_from_this()] {
      if (const auto self = weak.lock())
        self->failProvisional(
            {platform::WebError::Domain::network, platform::WebError::cancelled, "stopped"});
    });
  }
  void goBack() override { ++backs; }
  void goForward() override { ++forwards; }
  // As the engine: a page that keeps its user asks first, one that hangs says nothing until the deadline, and
  // none answers in the same turn.
  async::Task<std::optional<platform::LeaveReply>> tryClose(async::Duration deadline) override {
    ++closeQuestions;
    if (hangs)
      co_await async::sleep(deadline);
    else
      co_await async::nextTurn();
    if (hangs || !keepsUser)
      co_return std::nullopt;
    co_return platform::LeaveReply([answers = leaveAnswers](bool leave) { answers->push_back(leave); },
                                   false);
  }
  void terminateWebProcess() override {
    ++terminations;
    hangs = false;
    if (delegate)
      delegate->webProcessDidTerminate(false);
  }
  bool isResponsive() const override { return !hangs; }
  // As the engine notices it.
  void setHangs(bool value) {
    hangs = value;
    if (delegate)
      delegate->responsivenessDidChange();
  }
  std::optional<std::string> url() const override { return currentUrl; }
  std::optional<std::string> title() const override { return currentTitle; }
  bool canGoBack() const override { return back; }
  bool canGoForward() const override { return forward; }
  std::optional<double> loadProgress() const override {
    return loading ? std::optional(progress) : std::nullopt;
  }
  double pageZoom() const override { return zoom; }
  void setPageZoom(double value) override { zoom = value; }
  async::Task<platform::ScriptResult> evaluate(std::string source, std::optional<platform::FrameInfo> frame,
                                               async::Duration deadline) override {
    evaluations.push_back(source);
    evaluationFrames.push_back(std::move(frame));
    if (hangs) {
      co_await async::sleep(deadline);
      co_return std::unexpected(platform::ScriptError{platform::ScriptError::Kind::timedOut, {}});
    }
    co_await async::nextTurn();
    co_return answer ? answer(source) : platform::ScriptResult(boost::json::value());
  }
  std::optional<base::Bytes> interactionState() override { return state; }
  bool restoreInteractionState(const base::Bytes& bytes, platform::RestoredLoad load) override {
    restored.push_back(bytes);
    if (!acceptsState)
      return false;
    state = bytes;
    if (load == platform::RestoredLoad::page)
      goTo({bytes.begin(), bytes.end()});
    return true;
  }
  async::Task<platform::PrintResult> print(platform::PrintSettings settings) override {
    prints.push_back(settings);
    if (printsFor)
      co_await async::sleep(*std::exchange(printsFor, std::nullopt));
    if (settings.arrange && printResult != platform::PrintResult::cancelled)
      co_await settings.arrange();
    co_return printResult;
  }
  platform::PageFinder& finder() override { return pageFinder; }
  platform::NativeView nativeView() override { return native; }

  // The engine's address is that of a load as soon as it begins, a restored page's too, and that of the page
  // shown again when it fails. The bytes of a state are its page's address here.
  void goTo(const std::string& url) {
    currentUrl = url;
    setLoading(true);
    if (delegate)
      delegate->urlDidChange();
  }
  void commit() {
    shownUrl = currentUrl;
    if (delegate)
      delegate->didCommit();
  }
  void finish() {
    setLoading(false);
    delegate->didFinish();
  }
  void failProvisional(platform::WebError error) {
    error.failingURL = currentUrl.value_or("");
    currentUrl = shownUrl;
    setLoading(false);
    delegate->urlDidChange();
    delegate->didFailProvisional(error);
  }

  platform::WebViewDelegate* delegate = nullptr;
  platform::NativeView native;
  std::set<std::string> handlers;
  std::vector<std::string> loads;
  std::vector<std::string> documents;
  std::vector<std::string> evaluations;
  std::vector<std::optional<platform::FrameInfo>> evaluationFrames; // of each of these
  std::vector<base::Bytes> restored;
  std::vector<platform::PrintSettings> prints;
  std::optional<async::Duration> printsFor; // how long the next panel stays
  std::function<platform::ScriptResult(const std::string&)> answer;
  std::optional<std::string> currentUrl;
  std::optional<std::string> shownUrl; // of the page
  std::optional<std::string> currentTitle;
  std::optional<base::Bytes> state;
  std::shared_ptr<std::vector<bool>> leaveAnswers =
      std::make_shared<std::vector<bool>>(); // to what the page asked before it goes
  bool keepsUser = false;                    // it has a beforeunload, and its user has done something
  bool hangs = false;                        // a loop without end, or a box of the engine's that holds it up
  int closeQuestions = 0;
  int terminations = 0;
  platform::PrintResult printResult = platform::PrintResult::done;
  bool commitsByItself = false; // a while after the load has begun
  bool commitsAtOnce = false;   // before anybody looks, as no engine does: for measurements of something else
  bool acceptsState = true;
  bool back = false;
  bool forward = false;
  bool loading = false;
  double progress = 0.1;
  FakePageFinder pageFinder;
  int stops = 0;
  int reloads = 0;
  int backs = 0;
  int forwards = 0;
  double zoom = 1.0;

 private:
  void setLoading(bool value) {
    loading = value;
    if (delegate)
      delegate->loadingDidChange();
  }

  async::Timer commit_;
};

class FakeWebViewFactory final : public platform::WebViewFactory {
 public:
  std::shared_ptr<platform::WebView>
  make(const std::vector<std::shared_ptr<const platform::UserScript>>& scripts) override {
    auto view = std::make_shared<FakeWebView>();
    view->acceptsState = acceptsState;
    if (onMake)
      onMake(*view);
    made.push_back(view);
    names.clear();
    for (const auto& script : scripts)
      names.push_back(script->name);
    return view;
  }

  std::shared_ptr<platform::WebView> makeDocumentView() override {
    auto view = std::make_shared<FakeWebView>();
    if (onMake)
      onMake(*view);
    documentViews.push_back(view);
    return view;
  }

  std::vector<std::weak_ptr<FakeWebView>> made;
  std::vector<std::weak_ptr<FakeWebView>> documentViews;
  bool acceptsState = true;
  std::function<void(FakeWebView&)> onMake;
  std::vector<std::string> names; // of the scripts of the last one
};

class FakeDownload final : public platform::Download {
 public:
  void setDestinationHandler(DestinationHandler value) override { handler = std::move(value); }
  std::string suggestedFileName() const override { return suggestedName; }
  Progress progress() const override {
    ++looks;
    return current;
  }
  // The engine asks its network process, which answers later.
  void cancel() override {
    async::EventLoop::current().post([this] { failed.emit("cancelled"); });
  }

  DestinationHandler handler;
  std::string suggestedName;
  Progress current;
  mutable int looks = 0; // at the progress
};

} // namespace ondrel::support
