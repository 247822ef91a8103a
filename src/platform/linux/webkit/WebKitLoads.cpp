#include "platform/linux/webkit/WebKitLoads.h"

#include "base/Translation.h"

namespace ondrel::platform::webkit {

namespace {

constexpr std::string_view blankPage = "about:blank";

// The engine loses a load that is asked for while the web process is still being made for another one: it
// neither commits nor fails (measured, 2.50). A load within the document is never told to have started.
constexpr std::chrono::seconds longestHold{3};

WebError restrictedPort(const std::string& url) {
  return {WebError::Domain::policy, 103, base::trMark("Not allowed to use restricted network port"), url};
}

WebError refused() {
  return {WebError::Domain::policy, WebError::frameLoadInterrupted, base::trMark("Frame load interrupted")};
}

WebError timedOut(const std::string& url) {
  return {WebError::Domain::network, WebError::timedOut, base::trMark("The request timed out"), url};
}

} // namespace

void WebKitLoads::requested(const std::string& url) {
  requestedUrl_ = url;
  if (hold_)
    return;
  if (awaitsStart())
    hold_.emplace(longestHold, [this] { begin(); });
  else
    begin();
}

void WebKitLoads::begin() {
  hold_.reset();
  awaitsCommit_ = true;
  startedSinceRequest_ = false;
  watchdog_ = async::Timer(commitLimit, [this] { timeOut(); });
  listener_.beginLoad(requestedUrl_);
}

void WebKitLoads::stopWaiting() {
  awaitsCommit_ = false;
  watchdog_.stop();
}

void WebKitLoads::abandoned() {
  hold_.reset();
  stopWaiting();
}

void WebKitLoads::started() {
  startedSinceRequest_ = true;
  state_ = State::running;
  if (hold_)
    begin();
}

void WebKitLoads::committed(const std::string& url) {
  const bool wasRequested = awaitsCommit_;
  stopWaiting();
  // The engine shows an empty page in place of one from a port that it never connects to.
  if (wasRequested && url == blankPage && !requestedUrl_.starts_with("about:")) {
    state_ = State::failed;
    listener_.loadFailed(restrictedPort(requestedUrl_), true);
    return;
  }
  state_ = State::committed;
  listener_.loadCommitted();
}

void WebKitLoads::finished() {
  const bool succeeded = state_ == State::committed;
  state_ = State::idle;
  if (succeeded)
    listener_.loadFinished();
}

void WebKitLoads::failed(const WebError& error, bool provisional) {
  if (hold_ && state_ != State::running) {
    begin(); // what has failed is the load that nobody wants any more
    return;
  }
  // The load that a new request replaces ends with a failure of its own before the new one starts.
  if (!awaitsStart())
    stopWaiting();
  if (state_ == State::failed)
    return;
  state_ = State::failed;
  listener_.loadFailed(error, provisional);
}

void WebKitLoads::refusedByPolicy() {
  if (!awaitsStart())
    return;
  if (hold_) {
    begin();
    return;
  }
  stopWaiting();
  listener_.loadFailed(refused(), true);
}

void WebKitLoads::released(bool leave) {
  if (!leave)
    abandoned();
  else if (awaitsCommit_)
    watchdog_ = async::Timer(commitLimit, [this] { timeOut(); });
}

void WebKitLoads::timeOut() {
  hold_.reset();
  awaitsCommit_ = false;
  state_ = State::failed; // what the engine says of the stop is no second failure
  listener_.loadTimedOut(timedOut(requestedUrl_));
}

} // namespace ondrel::platform::webkit
