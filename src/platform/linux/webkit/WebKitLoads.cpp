#include "platform/linux/webkit/WebKitLoads.h"

#include "base/Translation.h"

namespace ondrel::platform::webkit {

namespace {

constexpr std::string_view blankPage = "about:blank";

// The engine loses a load that is asked for while the web process is still being made for another one: it
// neither commits nor fails (measured, 2.50). Making it takes seconds where the machine is busy.
constexpr std::chrono::seconds longestHold{15};

// A load within the document is never told to have started: the engine just loads nothing any more.
constexpr std::chrono::seconds longestQuiet{1};

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
  if (awaitsStart_)
    hold_.emplace(longestHold, [this] { begin(); });
  else
    begin();
}

void WebKitLoads::restored() {
  abandoned();
  awaitsStart_ = true;
}

void WebKitLoads::begin() {
  hold_.reset();
  awaitsStart_ = true;
  awaitsCommit_ = true;
  watchdog_ = async::Timer(commitLimit, [this] { timeOut(); });
  listener_.beginLoad(requestedUrl_);
}

void WebKitLoads::loadingChanged(bool isLoading) {
  quiet_.stop();
  if (!isLoading && awaitsStart_)
    quiet_ = async::Timer(longestQuiet, [this] { neverStarts(); });
}

void WebKitLoads::neverStarts() {
  if (!awaitsStart_)
    return;
  if (hold_)
    begin();
  else
    stopWaiting();
}

void WebKitLoads::stopWaiting() {
  awaitsStart_ = false;
  awaitsCommit_ = false;
  watchdog_.stop();
}

void WebKitLoads::abandoned() {
  hold_.reset();
  stopWaiting();
}

void WebKitLoads::started() {
  awaitsStart_ = false;
  state_ = State::running;
  if (hold_)
    begin();
}

void WebKitLoads::committed(const std::string& url) {
  // What the engine has not started yet is the next one.
  const bool wasRequested = awaitsCommit_ && !awaitsStart_;
  if (!awaitsStart_)
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
  // The load that a new request replaces ends with a failure of its own before the new one starts.
  const bool isOfTheOneBefore =
      awaitsStart_ && (!provisional || state_ == State::running || state_ == State::failed);
  if (!isOfTheOneBefore && hold_) {
    begin(); // what has failed is the load that nobody wants any more
    return;
  }
  if (!isOfTheOneBefore)
    stopWaiting();
  if (state_ == State::failed)
    return;
  state_ = State::failed;
  listener_.loadFailed(error, provisional);
}

void WebKitLoads::refusedByPolicy() {
  if (!awaitsStart_)
    return;
  if (hold_) {
    begin();
    return;
  }
  const bool wasRequested = awaitsCommit_;
  stopWaiting();
  if (wasRequested)
    listener_.loadFailed(refused(), true);
}

void WebKitLoads::released(bool leave) {
  if (!leave)
    abandoned();
  else if (awaitsCommit_)
    watchdog_ = async::Timer(commitLimit, [this] { timeOut(); });
}

void WebKitLoads::timeOut() {
  abandoned();
  state_ = State::failed; // what the engine says of the stop is no second failure
  listener_.loadTimedOut(timedOut(requestedUrl_));
}

} // namespace ondrel::platform::webkit
