#include "start/DemoMode.h"

#include "start/ThrowAwayFolder.h"

#include <fmt/format.h>

#include <fcntl.h>
#include <spawn.h>
#include <sys/file.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <fstream>

namespace ondrel::start {

namespace fs = std::filesystem;

namespace {

// The service's first line of output, which says that it is ready; none when it ended without.
std::optional<std::string> readLine(int descriptor) {
  std::string line;
  char c = 0;
  while (true) {
    const auto got = read(descriptor, &c, 1);
    if (got < 0 && errno == EINTR)
      continue;
    if (got <= 0)
      return std::nullopt;
    if (c == '\n')
      return line;
    line += c;
  }
}

// Who begins a home gives it such a folder; nobody has begun this one.
void keepDocumentsFolder(const fs::path& configuration) {
  std::error_code error;
  const auto file = configuration / "user-dirs.dirs";
  fs::create_directory(configuration, error);
  if (!fs::exists(file, error))
    std::ofstream(file) << "XDG_DOCUMENTS_DIR=\"$HOME/Documents\"\n";
}

// With another home the display's key is no longer found beside it.
void keepDisplayRights() {
  const auto* home = std::getenv("HOME");
  const auto key = fs::path(home ? home : "") / ".Xauthority";
  std::error_code error;
  if (!std::getenv("XAUTHORITY") && key.is_absolute() && fs::exists(key, error))
    setenv("XAUTHORITY", key.c_str(), 1);
}

} // namespace

std::expected<std::unique_ptr<DemoMode>, std::string>
DemoMode::prepare(const std::optional<std::string>& keptProfile) {
  std::unique_ptr<DemoMode> demo(new DemoMode);
  std::error_code error;
  if (keptProfile) {
    demo->profile_ = fs::absolute(*keptProfile, error).string();
    demo->isKept_ = true;
    if (fs::create_directories(demo->profile_, error))
      fs::permissions(demo->profile_, fs::perms::owner_all, error);
  } else {
    auto pattern = (fs::temp_directory_path(error) / "ondrel-demo-XXXXXX").string();
    if (!mkdtemp(pattern.data()))
      return std::unexpected(
          fmt::format("can't make a folder for the demonstration: {}", std::strerror(errno)));
    demo->profile_ = pattern;
  }
  if (!error)
    fs::create_directory(demo->profile_ + "/home", error);
  if (error)
    return std::unexpected(fmt::format("can't use the folder {}: {}", demo->profile_, error.message()));

  keepDocumentsFolder(demo->profile_ + "/config");
  keepDisplayRights();
  const std::pair<const char*, std::string> variables[] = {{"HOME", "/home"},
                                                           {"XDG_CONFIG_HOME", "/config"},
                                                           {"XDG_DATA_HOME", "/data"},
                                                           {"XDG_CACHE_HOME", "/cache"},
                                                           {"XDG_STATE_HOME", "/state"},
                                                           {"ONDREL_SITE", "/site.json"}};
  for (const auto& [name, path] : variables)
    setenv(name, (demo->profile_ + path).c_str(), 1);
  // The toolkit's own settings would go to the user's through a service.
  setenv("GSETTINGS_BACKEND", "keyfile", 1);
  return demo;
}

bool DemoMode::lockProfile() {
  lock_ = open(profile_.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
  // Not all file systems have locks.
  return lock_ < 0 || flock(lock_, LOCK_EX | LOCK_NB) == 0 || errno != EWOULDBLOCK;
}

std::optional<std::string> DemoMode::startService(const std::string& executableFolder) {
  if (!lockProfile())
    return fmt::format("the demonstration runs already on the folder {}", profile_);
  return launch(executableFolder + "/ondrel-demo-service");
}

std::optional<std::string> DemoMode::launch(const std::string& program) {
  std::array<int, 2> input{};
  std::array<int, 2> output{};
  if (pipe2(input.data(), O_CLOEXEC) != 0 || pipe2(output.data(), O_CLOEXEC) != 0)
    return fmt::format("can't start the demonstration service: {}", std::strerror(errno));
  serviceInput_ = input[1];

  std::array<std::string, 6> words{program,        "--until-eof",
                                   "--site-file",  profile_ + "/site.json",
                                   "--ports-file", profile_ + "/ports.json"};
  std::array<char*, 7> arguments{};
  for (std::size_t i = 0; i < words.size(); ++i)
    arguments[i] = words[i].data();
  posix_spawn_file_actions_t actions;
  posix_spawn_file_actions_init(&actions);
  posix_spawn_file_actions_adddup2(&actions, input[0], STDIN_FILENO);
  posix_spawn_file_actions_adddup2(&actions, output[1], STDOUT_FILENO);
  const auto failure = posix_spawn(&service_, program.c_str(), &actions, nullptr, arguments.data(), environ);
  posix_spawn_file_actions_destroy(&actions);
  close(input[0]);
  close(output[1]);
  std::optional<std::string> ready;
  if (failure == 0)
    ready = readLine(output[0]);
  close(output[0]);
  if (failure != 0) {
    service_ = -1;
    if (failure == ENOENT)
      return fmt::format("there is no {}: the demonstration is in the package \"ondrel-demo\"", program);
    return fmt::format("can't start {}: {}", program, std::strerror(failure));
  }
  if (!ready)
    return "the demonstration service ended before it was ready";
  return std::nullopt;
}

DemoMode::~DemoMode() {
  if (serviceInput_ >= 0)
    close(serviceInput_);
  if (service_ > 0)
    waitpid(service_, nullptr, 0);
  if (!isKept_ && !profile_.empty())
    removeThrowAwayFolder(profile_);
  if (lock_ >= 0)
    close(lock_);
}

} // namespace ondrel::start
