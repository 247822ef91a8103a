#include "Process.h"

#include <fcntl.h>
#include <poll.h>
#include <sys/wait.h>
#include <unistd.h>

#include <csignal>
#include <cstdlib>
#include <fstream>
#include <sstream>

namespace ondrel::e2e {

namespace {

constexpr std::chrono::milliseconds lookAgain{20};

[[noreturn]] void runChild(const std::string& program, std::vector<std::string>& arguments,
                           const Environment& environment, const std::string& outputPath) {
  const int output = open(outputPath.c_str(), O_CREAT | O_WRONLY | O_TRUNC, 0600);
  dup2(output, STDOUT_FILENO);
  dup2(output, STDERR_FILENO);
  for (const auto& [name, value] : environment) {
    if (value)
      setenv(name.c_str(), value->c_str(), 1);
    else
      unsetenv(name.c_str());
  }
  std::vector<char*> raw{const_cast<char*>(program.c_str())};
  for (auto& argument : arguments)
    raw.push_back(argument.data());
  raw.push_back(nullptr);
  execv(program.c_str(), raw.data());
  _exit(127);
}

} // namespace

Process::Process(const std::string& program, std::vector<std::string> arguments,
                 const Environment& environment, std::string outputPath)
    : outputPath_(std::move(outputPath)) {
  id_ = fork();
  if (id_ == 0)
    runChild(program, arguments, environment, outputPath_);
}

Process::~Process() {
  if (!isRunning())
    return;
  signal(SIGKILL);
  wait(std::chrono::seconds(10));
}

void Process::signal(int number) const {
  if (!status_)
    kill(id_, number);
}

std::optional<int> Process::wait(std::chrono::milliseconds limit) {
  eventually(
      [this] {
        int raw = 0;
        if (!status_ && waitpid(id_, &raw, WNOHANG) == id_)
          status_ = WIFEXITED(raw) ? WEXITSTATUS(raw) : -WTERMSIG(raw);
        return status_.has_value();
      },
      limit);
  return status_;
}

std::string Process::output() const {
  std::ifstream file(outputPath_, std::ios::binary);
  std::ostringstream text;
  text << file.rdbuf();
  return text.str();
}

bool eventually(const std::function<bool()>& holds, std::chrono::milliseconds limit) {
  const auto end = std::chrono::steady_clock::now() + limit;
  while (!holds()) {
    if (std::chrono::steady_clock::now() >= end)
      return false;
    poll(nullptr, 0, static_cast<int>(lookAgain.count()));
  }
  return true;
}

} // namespace ondrel::e2e
