#pragma once

#include "jmap/mail/MailQueries.h"

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace ondrel::web {
class ScriptMessageFields;
}

namespace ondrel::highlights {

// What one frame of a page tells of the elements that show messages, its containers. All indexes are from 0;
// a page tells any number it likes.
struct ContainerReport {
  std::int64_t number = 0; // in its document, from 1; 0 where the page doesn't number
  std::int64_t count = 0;
  std::optional<std::int64_t> focusedIndex{};
  std::int64_t cardCount = 0; // of the conversation, collapsed ones too; 0 where none can be seen
  std::vector<std::int64_t> cardIndexes{}; // of each container, -1 for none; empty where not told
  std::optional<std::int64_t> focusedCard{};
  std::string openId{}; // of the email that the application had open then; empty where not told

  // Without the count it is none.
  static std::optional<ContainerReport> from(const web::ScriptMessageFields& fields);
};

// The Message-ID of the message that each container shows, where it is known; empty for an empty thread. A
// page with as many cards as the thread has messages shows them in its order. One with fewer tells only which
// of them is the open one: from there the others are counted along the thread.
std::vector<std::optional<std::string>> containerMessageIds(const ContainerReport& report,
                                                            const std::vector<jmap::ThreadEmailInfo>& thread,
                                                            const std::string& openId);

} // namespace ondrel::highlights
