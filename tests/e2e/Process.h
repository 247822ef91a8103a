#pragma once

#include "platform/linux/glib/Ref.h"

#include <gio/gio.h>

#include <chrono>
#include <csignal>
#include <fstream>
#include <functional>
#include <map>
#include <optional>
#include <sstream>
#include <string>
#include <thread>
#include <vector>

namespace ondrel::e2e {

// Environment variables to set; an absent value removes one.
using Environment = std::map<std::string, std::optional<std::string>>;

// For tests that open GTK's file panel: it brings libraries with leaks of their own, which a sanitizer's
// short stacks don't name.
inline const Environment wholeStacks{{"ASAN_OPTIONS", "fast_unwind_on_malloc=0"}};

// Looks again and again until it holds; false when the limit has passed.
inline bool eventually(const std::function<bool()>& holds,
                       std::chrono::milliseconds limit = std::chrono::seconds(20)) {
  const auto end = std::chrono::steady_clock::now() + limit;
  while (!holds()) {
    if (std::chrono::steady_clock::now() >= end)
      return false;
    std::this_thread::sleep_for(std::chrono::milliseconds(20));
  }
  return true;
}

// A child process whose output is collected in a new file. Ended with SIGKILL when the object dies.
class Process {
 public:
  Process(const std::string& program, const std::vector<std::string>& arguments,
          const Environment& environment, std::string outputPath)
      : outputPath_(std::move(outputPath)) {
    const auto launcher = glib::adopt(g_subprocess_launcher_new(G_SUBPROCESS_FLAGS_STDERR_MERGE));
    g_subprocess_launcher_set_stdout_file_path(launcher.get(), outputPath_.c_str());
    for (const auto& [name, value] : environment)
      value ? g_subprocess_launcher_setenv(launcher.get(), name.c_str(), value->c_str(), TRUE)
            : g_subprocess_launcher_unsetenv(launcher.get(), name.c_str());
    std::vector<const char*> raw{program.c_str()};
    for (const auto& argument : arguments)
      raw.push_back(argument.c_str());
    raw.push_back(nullptr);
    process_ = glib::adopt(g_subprocess_launcher_spawnv(launcher.get(), raw.data(), nullptr));
  }
  ~Process() {
    signal(SIGKILL);
    g_subprocess_wait(process_.get(), nullptr, nullptr);
  }
  Process(const Process&) = delete;
  Process& operator=(const Process&) = delete;

  // Of a process that runs.
  pid_t id() const { return std::stoi(g_subprocess_get_identifier(process_.get())); }
  void signal(int number) const { g_subprocess_send_signal(process_.get(), number); }
  bool isRunning() const { return g_subprocess_get_identifier(process_.get()) != nullptr; }
  // The exit status, or minus the number of the signal that ended it; none when it is still running by then.
  std::optional<int> wait(std::chrono::milliseconds limit) const {
    if (!eventually([this] { return !isRunning(); }, limit))
      return std::nullopt;
    return g_subprocess_get_if_exited(process_.get()) ? g_subprocess_get_exit_status(process_.get())
                                                      : -g_subprocess_get_term_sig(process_.get());
  }
  // Standard output and standard error so far.
  std::string output() const {
    std::ifstream file(outputPath_, std::ios::binary);
    std::ostringstream text;
    text << file.rdbuf();
    return text.str();
  }

 private:
  std::string outputPath_;
  glib::Ref<GSubprocess> process_;
};

} // namespace ondrel::e2e
