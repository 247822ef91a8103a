#pragma once

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <set>
#include <sstream>
#include <string>

namespace ondrel::support {

// A folder for one test, gone afterwards.
class TemporaryFolder {
 public:
  TemporaryFolder() : path_(mkdtemp(template_)) {}
  ~TemporaryFolder() { std::filesystem::remove_all(path_); }

  std::string file(const std::string& name) const { return path_ + "/" + name; }
  const std::string& path() const { return path_; }

  void write(const std::string& name, const std::string& content) const {
    std::ofstream(file(name)) << content;
  }
  std::string content(const std::string& name) const {
    std::ostringstream text;
    text << std::ifstream(file(name)).rdbuf();
    return text.str();
  }
  std::set<std::string> names() const {
    std::set<std::string> result;
    for (const auto& entry : std::filesystem::directory_iterator(path_))
      result.insert(entry.path().filename());
    return result;
  }

 private:
  char template_[32] = "/tmp/ondrel-test-XXXXXX";
  std::string path_;
};

} // namespace ondrel::support
