#pragma once

#include <sys/types.h>

#include <chrono>
#include <functional>
#include <map>
#include <optional>
#include <string>
#include <vector>

namespace ondrel::e2e {

// Environment variables to set; an absent value removes one.
using Environment = std::map<std::string, std::optional<std::string>>;

// For tests that open GTK's file panel: it brings libraries with leaks of their own, which a sanitizer's
// short stacks don't name.
inline const Environment wholeStacks{{"ASAN_OPTIONS", "fast_unwind_on_malloc=0"}};

// A child process whose output is collected in a file. Ended with SIGKILL when the object dies.
class Process {
 public:
  Process(const std::string& program, std::vector<std::string> arguments, const Environment& environment,
          std::string outputPath);
  ~Process();
  Process(const Process&) = delete;
  Process& operator=(const Process&) = delete;

  pid_t id() const { return id_; }
  void signal(int number) const;
  // The exit status, or minus the number of the signal that ended it; none when it is still running by then.
  std::optional<int> wait(std::chrono::milliseconds limit);
  bool isRunning() { return !wait(std::chrono::milliseconds(0)); }
  // Standard output and standard error so far.
  std::string output() const;

 private:
  pid_t id_ = -1;
  std::string outputPath_;
  std::optional<int> status_;
};

// Looks again and again until it holds; false when the limit has passed.
bool eventually(const std::function<bool()>& holds,
                std::chrono::milliseconds limit = std::chrono::seconds(20));

} // namespace ondrel::e2e
