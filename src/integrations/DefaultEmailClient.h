#pragma once

#include "async/Scope.h"
#include "base/Observable.h"
#include "platform/ProgramInfo.h"

#include <functional>
#include <optional>
#include <string>

namespace ondrel::platform {
class DefaultMailHelper;
class UriLauncher;
} // namespace ondrel::platform

namespace ondrel::integrations {

// The program opens mailto links on this desktop.
bool isDefaultEmailClient(const platform::UriLauncher& uriLauncher, const platform::ProgramInfo& programInfo);

// Success, and an error text when it failed, which may be missing.
using DefaultEmailCompletion = std::function<void(bool success, std::optional<std::string> error)>;

// What the settings show of the default mail application, and the way to become it. Main thread only.
class DefaultEmailClient {
 public:
  // Both outlive it.
  DefaultEmailClient(platform::DefaultMailHelper& helper, const platform::UriLauncher& uriLauncher,
                     platform::ProgramInfo programInfo);

  const platform::ProgramInfo& programInfo() const { return programInfo_; }

  base::Observable<bool> isDefault{false}; // from the first update() on
  base::Observable<bool> isSettingDefault{false};
  base::Observable<std::optional<std::string>> setDefaultError;

  // Asks the desktop, which reads files for it; others change it too.
  void update();
  // By the settings' button; nothing while it is under way.
  void setAsDefault();

 private:
  async::Task<void> setAsDefaultEmailClient(DefaultEmailCompletion completion);
  void didSet(bool success, const std::optional<std::string>& error);

  platform::DefaultMailHelper& helper_;
  const platform::UriLauncher& uriLauncher_;
  const platform::ProgramInfo programInfo_;
  async::Scope scope_;
};

} // namespace ondrel::integrations
