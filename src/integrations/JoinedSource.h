#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace ondrel::integrations {

// The texts of several files as one, with an LF between them, and where each line of it comes from.
class JoinedSource {
 public:
  struct File {
    std::string name;
    std::size_t start = 0; // of its text in the joined one
    std::size_t size = 0;
  };

  void add(std::string name, std::string_view text);

  const std::string& text() const { return text_; }
  const std::vector<File>& files() const { return files_; }
  std::string_view textOf(const File& file) const;
  // "name.js:12" for a line of the joined text, counted from 1 as a script engine does (ECMA-262, "Line
  // Terminators"). Behind the end it is the last one.
  std::string place(int line) const;

 private:
  std::string text_;
  std::vector<File> files_;
};

} // namespace ondrel::integrations
