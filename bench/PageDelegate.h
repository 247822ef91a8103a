#pragma once

#include "Bench.h"
#include "async/Signal.h"
#include "platform/PassiveWebViewDelegate.h"

namespace ondrel::bench {

// Allows a page everything, and tells when a load has ended. A page that fails ends the program.
class PageDelegate : public platform::PassiveWebViewDelegate {
 public:
  async::Signal loaded;

  void decidePolicy(const platform::NavigationAction&, platform::PolicyReply reply) override {
    std::move(reply)(platform::NavigationPolicy::allow);
  }
  void decidePolicy(const platform::NavigationResponse&, platform::PolicyReply reply) override {
    std::move(reply)(platform::NavigationPolicy::allow);
  }
  void didFinish() override { loaded.send(); }
  void didFail(const platform::WebError& error) override { fail(error.description); }
  void webProcessDidTerminate(bool) override { fail("the web process is gone"); }
};

} // namespace ondrel::bench
