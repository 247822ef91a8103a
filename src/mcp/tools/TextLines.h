#pragma once

#include <cstddef>
#include <string>
#include <string_view>

namespace ondrel::mcp::tools {

// Builds plain text out of running text and of what stands between: white space collapses as on a page, no
// more than one line stays empty in a row, and nothing stands at the beginning or the end but words.
class TextLines {
 public:
  void add(std::string_view text);
  // In front of the next word, if there is one: a list's item without words is no line.
  void addMark(std::string_view mark) { mark_ = mark; }

  void startLine();      // unless one begins here
  void startParagraph(); // behind an empty line
  void breakLine();      // always; a second one leaves an empty line
  void startCell();      // in the row of a table

  void enterPreformatted() { ++preformatted_; }
  void leavePreformatted() { preformatted_ -= preformatted_ > 0 ? 1 : 0; }
  void enterQuote() { ++quotes_; }
  void leaveQuote();

  // How much there is, and what came since then.
  std::size_t size() const { return text_.size(); }
  std::string_view since(std::size_t size) const;

  std::string text() && { return std::move(text_); }

 private:
  void write(std::string_view word);
  void addPreformatted(std::string_view text);
  void beginNow();

  static constexpr std::size_t deepestQuote = 8; // that is shown

  std::string text_;
  std::string mark_;
  std::size_t due_ = 0; // line feeds before the next word
  bool spaceIsDue_ = false;
  bool cellIsDue_ = false;
  std::size_t preformatted_ = 0;
  std::size_t quotes_ = 0;
};

} // namespace ondrel::mcp::tools
