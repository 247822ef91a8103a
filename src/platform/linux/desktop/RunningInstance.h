#pragma once

#include <glib.h>

#include <optional>
#include <string>
#include <vector>

namespace ondrel::platform::desktop {

// The instance of an application that already runs in this session, reached over the session bus
// (org.freedesktop.Application of the desktop entry standard).
class RunningInstance {
 public:
  explicit RunningInstance(std::string applicationId) : id_(std::move(applicationId)) {}

  bool isThere() const;
  // Hands it URLs (valid UTF-8), or asks it to come to the front when there are none, with the token that the
  // desktop gave this process for that, and waits until it has them. Gives the exit status for a start that
  // has no more to do; absent when there is no such instance, or it ended before it had them. A failure is
  // logged.
  std::optional<int> open(const std::vector<std::string>& urls) const;
  // Has it perform one of its actions, which takes no parameter. Likewise.
  std::optional<int> activateAction(const std::string& name) const;

 private:
  // `arguments` is floating.
  std::optional<int> call(const char* method, GVariant* arguments) const;

  std::string id_;
};

// Gives the application's name on the session bus back, if this process has it; it is free when this returns.
void giveUpName(const std::string& applicationId);

} // namespace ondrel::platform::desktop
