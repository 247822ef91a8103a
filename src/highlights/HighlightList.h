#pragma once

#include "async/Scope.h"
#include "async/Timer.h"
#include "highlights/HighlightExport.h"

#include <optional>
#include <set>
#include <string>

namespace ondrel::highlights {

class HighlightStore;

// What the Highlights window lists, for as long as it is open: follows the store, and asks the server for the
// messages that it doesn't know yet. Main thread only.
class HighlightList {
 public:
  // Changes of the store that come together are shown together.
  static constexpr auto refreshPause = std::chrono::milliseconds(200);
  // How long an answer is waited for before the list shows without it and says so.
  static constexpr auto patience = std::chrono::seconds(3);

  // Both outlive it.
  HighlightList(HighlightStore& store, HighlightExport& highlightExport);

  // What matches the search. Absent while there is nothing to show yet.
  const std::optional<HighlightDocument>& document() const { return document_; }
  bool isLookingUp() const { return isLookingUp_; }
  // Why messages are missing, in a sentence; empty for nothing. The document doesn't say it again.
  const std::string& problem() const { return problem_; }

  // Asks for what was not answered, in place of a question that is under way.
  void lookUpAgain();
  // Words; empty for everything.
  void search(std::string words);

  // Something of it is new. `isSearch`: the document is another part of the list.
  base::Event<bool> changed;

 private:
  void storeChanged();
  void show();
  void lookUpNew();
  async::Task<void> lookUp();
  bool hasNew() const;

  HighlightStore& store_;
  HighlightExport& export_;
  MessageLookup messages_;
  std::set<std::string> asked_; // answered or not
  bool isLookingUp_ = false;
  HighlightDocument everything_;
  std::optional<HighlightDocument> document_;
  std::string problem_;
  std::string search_;
  std::optional<async::Timer> refresh_; // while one is due
  async::Timer patience_;
  bool isSlow_ = false; // the question has outlasted that
  base::Subscription storeChanged_;
  std::optional<async::Scope> scope_; // of the question that is under way
};

} // namespace ondrel::highlights
