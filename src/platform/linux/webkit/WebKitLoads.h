#pragma once

#include "async/Timer.h"
#include "platform/WebError.h"

#include <chrono>
#include <optional>
#include <string>

namespace ondrel::platform::webkit {

// Turns the engine's load events into one report for each load: committed and finished, or one failure. The
// engine ends failed loads with "finished" too, says nothing of loads that a policy refused, and waits for
// silent servers without end.
class WebKitLoads {
 public:
  // A load that the program asked for and of which nothing was committed after this time has failed.
  static constexpr std::chrono::seconds commitLimit{60};

  // Any call may destroy the WebKitLoads.
  class Listener {
   public:
    virtual ~Listener() = default;
    virtual void loadCommitted() = 0;
    virtual void loadFinished() = 0;
    virtual void loadFailed(const WebError& error, bool provisional) = 0;
    // To ask the engine for an address.
    virtual void beginLoad(const std::string& url) = 0;
    // To stop the engine, and to tell of the failure.
    virtual void loadTimedOut(const WebError& error) = 0;
  };

  explicit WebKitLoads(Listener& listener) : listener_(listener) {}

  // What the program does. A request begins at once, unless what was asked for before hasn't started yet.
  void requested(const std::string& url);
  void restored();  // the history has asked the engine for its page
  void abandoned(); // stopped, or something other than a load by address took its place
  bool holdsRequest() const { return hold_.has_value(); }

  // What the engine tells.
  void started();
  void committed(const std::string& url);
  void finished();
  void failed(const WebError& error, bool provisional);
  void refusedByPolicy();
  void loadingChanged(bool isLoading);
  // The user is asked whether the present page may be left, and has answered: it takes none of the load's
  // time.
  void heldUp() { watchdog_.stop(); }
  void released(bool leave);

 private:
  // A load waits for its commit from the request on, and is the engine's current one from its start on.
  enum class State { idle, running, committed, failed };
  void begin();
  void neverStarts();
  void stopWaiting();
  void timeOut();

  Listener& listener_;
  State state_ = State::idle;
  bool awaitsStart_ = false;  // of what the engine was asked for last
  bool awaitsCommit_ = false; // of a request
  std::string requestedUrl_;
  async::Timer watchdog_;
  async::Timer quiet_; // while the engine loads nothing, and has not started what it was asked for
  std::optional<async::Timer> hold_; // while the request waits for the start of the one before it
};

} // namespace ondrel::platform::webkit
