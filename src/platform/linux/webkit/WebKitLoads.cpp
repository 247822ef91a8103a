#include "platform/linux/webkit/WebKitLoads.h"

namespace ondrel::platform::webkit {

namespace {

constexpr std::string_view blankPage = "about:blank";

WebError restrictedPort(const std::string& url) {
  return {WebError::Domain::policy, 103, "Not allowed to use restricted network port", url};
}

WebError refused() {
  return {WebError::Domain::policy, WebError::frameLoadInterrupted, "Frame load interrupted"};
}

WebError timedOut(const std::string& url) {
  return {WebError::Domain::network, WebError::timedOut, "The request timed out", url};
}

} // namespace

void WebKitLoads::requested(const std::string& url) {
  requestedUrl_ = url;
  awaitsCommit_ = true;
  startedSinceRequest_ = false;
  watchdog_ = async::Timer(commitLimit, [this] { timeOut(); });
}

void WebKitLoads::stopWaiting() {
  awaitsCommit_ = false;
  watchdog_.stop();
}

void WebKitLoads::abandoned() {
  stopWaiting();
}

void WebKitLoads::started() {
  startedSinceRequest_ = true;
  state_ = State::running;
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
  stopWaiting();
  listener_.loadFailed(refused(), true);
}

void WebKitLoads::released(bool leave) {
  if (!leave)
    stopWaiting();
  else if (awaitsCommit_)
    watchdog_ = async::Timer(commitLimit, [this] { timeOut(); });
}

void WebKitLoads::timeOut() {
  awaitsCommit_ = false;
  state_ = State::failed; // what the engine says of the stop is no second failure
  listener_.loadTimedOut(timedOut(requestedUrl_));
}

} // namespace ondrel::platform::webkit
