#include "start/ReplacedProcess.h"

#include <fmt/format.h>

#include <cerrno>
#include <cstring>
#include <unistd.h>

namespace ondrel::start {

std::string becomeProgram(const std::string& path, const std::vector<std::string>& arguments) {
  std::vector<std::string> words{path};
  words.insert(words.end(), arguments.begin(), arguments.end());
  std::vector<char*> pointers;
  for (auto& word : words)
    pointers.push_back(word.data());
  pointers.push_back(nullptr);
  execv(path.c_str(), pointers.data());
  return fmt::format("{} can't be started: {}", path, std::strerror(errno));
}

} // namespace ondrel::start
