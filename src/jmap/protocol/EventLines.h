#pragma once

#include <array>
#include <cstddef>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace ondrel::jmap {

// What the program needs to know of one line of an event stream.
struct EventLine {
  bool isData = false;       // a "data:" field
  bool namesMailbox = false; // holds "Mailbox" in double quotes
  bool namesEmail = false;   // holds "Email" in double quotes
  bool isEmpty = false;      // ends an event
  // The value of an "id" field that can be sent back: at most 256 bytes without control characters.
  std::optional<std::string> id = {};

  bool operator==(const EventLine&) const = default;
};

// Cuts the bytes of an event stream (WHATWG HTML, section 9.2.5) into lines, ended by LF, CR or CRLF,
// wherever the chunks are cut. Lines may have any length and hold any bytes: nothing of them is kept but
// their beginning and what a word that runs over the edge of a chunk needs.
class EventLines {
 public:
  // The lines that this chunk has ended, empty ones included.
  std::vector<EventLine> feed(std::string_view chunk);
  // The last line, when the stream ends without a line end: one line or none.
  std::vector<EventLine> finish();

 private:
  // Finds a word in a text that comes in pieces.
  class Finder {
   public:
    explicit Finder(std::string_view word) : word_(word) {}
    void feed(std::string_view piece);
    bool found() const { return found_; }
    void reset() { matched_ = 0, found_ = false; }

   private:
    std::string_view word_; // begins and ends with a double quote and has none inside
    std::size_t matched_ = 0;
    bool found_ = false;
  };

  static constexpr std::size_t longestStart = 264; // a byte order mark, a field's name and an id

  void take(std::string_view piece);
  EventLine endLine();

  Finder mailbox_{"\"Mailbox\""};
  Finder email_{"\"Email\""};
  std::array<char, longestStart> start_{}; // the first bytes of the line
  std::size_t started_ = 0;
  bool isCut_ = false; // the line has more than those
  bool firstLine_ = true;
  bool afterCarriageReturn_ = false;
};

} // namespace ondrel::jmap
