#include "start/ThrowAwayFolder.h"

#include <sys/wait.h>

#include <csignal>
#include <filesystem>
#include <fstream>
#include <ranges>
#include <vector>

namespace ondrel::start {

namespace fs = std::filesystem;

namespace {

std::vector<pid_t> children() {
  std::vector<pid_t> result;
  std::error_code error;
  for (fs::directory_iterator thread("/proc/self/task", error), end; !error && thread != end;
       thread.increment(error)) {
    std::ifstream list(thread->path() / "children");
    for (pid_t child = 0; list >> child;)
      result.push_back(child);
  }
  return result;
}

} // namespace

void removeThrowAwayFolder(const std::string& folder) {
  // The newest first, and all at once: none of them shall complain that another one has gone.
  const auto left = children();
  for (const auto child : left | std::views::reverse)
    kill(child, SIGKILL);
  for (const auto child : left)
    waitpid(child, nullptr, 0);
  std::error_code ignored;
  fs::remove_all(folder, ignored);
}

} // namespace ondrel::start
