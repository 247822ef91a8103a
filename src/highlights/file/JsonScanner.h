#pragma once

#include <cstddef>
#include <optional>
#include <string_view>

namespace ondrel::highlights {

// Walks through JSON by its brackets and quotes alone, so that large or damaged text can be parsed in parts.
// Whether a part is good JSON the parser says.
class JsonScanner {
 public:
  explicit JsonScanner(std::string_view text = {}) : text_(text) {}

  std::size_t position() const { return position_; }
  void setPosition(std::size_t position) { position_ = position; }

  // Each of them skips white space first.
  bool isAtEnd();
  // Takes this character, if it is the next one.
  bool take(char c);
  // A string with its quotes; absent, and nothing is taken, where there is none.
  std::optional<std::string_view> takeString();
  // All up to the comma or closing bracket behind an element; absent, and nothing is taken, where none comes
  // within `longest` bytes.
  std::optional<std::string_view> takeElement(std::size_t longest);

 private:
  void skipWhiteSpace();
  bool skipString(std::size_t end);

  std::string_view text_;
  std::size_t position_ = 0;
};

} // namespace ondrel::highlights
