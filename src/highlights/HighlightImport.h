#pragma once

#include "async/Task.h"
#include "base/Log.h"
#include "base/Observable.h"
#include "highlights/HighlightPayload.h"
#include "highlights/TransferProgress.h"

#include <cstddef>
#include <expected>
#include <functional>
#include <optional>
#include <set>
#include <string>
#include <vector>

namespace ondrel::platform {
class Application;
class FileReader;
class Panels;
} // namespace ondrel::platform

namespace ondrel::highlights {

class HighlightStore;

// Highlights from a file that an export has made, or that says it was, into the store. One for the process,
// main thread only.
class HighlightImport {
 public:
  // All outlive it.
  struct Services {
    HighlightStore& store;
    platform::Application& application;
    platform::Panels& panels;
    platform::FileReader& reader;
    // What follows an import that added something: the marks of the mailbox lists, then the labels.
    std::function<async::Task<void>()> pushMailboxMarks;
    // The latter gets a callback to tell how many are done, which says whether to go on.
    std::function<async::Task<void>(std::set<std::string> threadIds, std::function<bool(std::size_t done)>)>
        syncTags;
  };

  explicit HighlightImport(Services services);

  // Asks which file and adds what isn't there yet. Imports take place one after the other.
  async::Task<void> importHighlights();

  // Of the import that is under way; absent while there is none.
  const base::Observable<std::optional<TransferProgress>>& progress() const { return progress_; }
  // Ends the present step of the import that is under way: what has been added, or labelled, stays.
  void stop() { stopRequested_ = true; }

 private:
  using Highlights = std::vector<ExportedHighlight>;

  // Why nothing was imported. Without a title the user has stopped it, and is told nothing.
  struct ImportProblem {
    std::string title;
    std::string text;
  };
  struct Merged {
    std::size_t imported = 0;
    std::size_t skipped = 0;
    std::set<std::string> threadIds; // of what was imported
  };

  async::Task<std::expected<Merged, ImportProblem>> importFile(std::string path);
  async::Task<std::expected<Highlights, ImportProblem>> readHighlights(std::string path);
  async::Task<std::optional<std::string>> readText(std::string path);
  // `working` when the user has stopped it.
  async::Task<PayloadDecoder::State> decode(PayloadDecoder& decoder);
  async::Task<Merged> merge(Highlights highlights);
  async::Task<void> show(std::set<std::string> threadIds);
  bool isKnown(const ExportedHighlight& exported) const;

  const Services services_;
  const base::Logger logger_{"system"};
  base::Observable<std::optional<TransferProgress>> progress_;
  bool stopRequested_ = false;
};

} // namespace ondrel::highlights
