#pragma once

#include "async/Scope.h"
#include "base/Event.h"
#include "base/Log.h"

#include <functional>
#include <string>
#include <vector>

namespace ondrel::platform {
class Application;
class KeptFile;
class Panels;
} // namespace ondrel::platform

namespace ondrel::program {

// Looks after the files that can't be saved: tells the user once for a run of failures, and saves what is
// left of them when the program ends.
class UnsavedFiles {
 public:
  // All outlive it.
  UnsavedFiles(std::vector<std::reference_wrapper<platform::KeptFile>> files,
               platform::Application& application, platform::Panels& panels);

 private:
  void look();
  void saveAtTheEnd();
  async::Task<void> tell(std::string problem);

  const std::vector<std::reference_wrapper<platform::KeptFile>> files_;
  platform::Application& application_;
  platform::Panels& panels_;
  bool told_ = false;
  const base::Logger logger_{"system"};
  std::vector<base::Subscription> subscriptions_;
  async::Scope scope_;
};

} // namespace ondrel::program
