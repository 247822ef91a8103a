#pragma once

#include "highlights/file/HighlightPayload.h"
#include "highlights/file/JsonScanner.h"

#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace ondrel::highlights {

// Reads what can be read of a highlights file: one that another copy has saved, or one that was damaged. Bad
// records are left out, and where the text makes no sense it goes on with the next message. Works in small
// steps, as PayloadDecoder does.
class HighlightSalvage {
 public:
  // Whether it may be such a file.
  static bool looksLikeFile(std::string_view text);

  // The text must stay where it is until the work is done.
  explicit HighlightSalvage(std::string_view text);

  // Goes on for a moment; false when all is read.
  bool step();
  std::vector<ExportedHighlight> take() { return std::move(highlights_); }
  // Something was left out.
  bool isDamaged() const { return isDamaged_; }

 private:
  bool openMessage();
  bool readRecord();
  bool skipToNextMessage(std::size_t from);

  std::string_view text_;
  JsonScanner scanner_;
  std::optional<std::string> messageId_; // whose list is being read
  bool isDone_ = false;
  bool isDamaged_ = false;
  std::vector<ExportedHighlight> highlights_;
};

} // namespace ondrel::highlights
