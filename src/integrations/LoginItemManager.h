#pragma once

#include "async/Scope.h"
#include "base/Observable.h"

namespace ondrel::platform {
class LoginItem;
}

namespace ondrel::integrations {

// The switch for the start at login. Main thread only.
class LoginItemManager {
 public:
  // `service` outlives it.
  explicit LoginItemManager(platform::LoginItem& service);

  base::Observable<bool> isEnabled; // as the desktop has it, whoever changed it
  base::Event<> didToggle;          // a wish was met, or couldn't be

  // Logs what fails.
  void setEnabled(bool enabled);

 private:
  async::Task<void> toggle(bool enabled);

  platform::LoginItem& service_;
  base::Subscription changes_;
  async::Scope scope_;
};

} // namespace ondrel::integrations
