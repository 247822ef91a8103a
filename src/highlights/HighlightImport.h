#pragma once

#include "async/Task.h"
#include "base/Log.h"
#include "base/Observable.h"
#include "highlights/TransferProgress.h"
#include "highlights/file/HighlightPayload.h"

#include <cstddef>
#include <expected>
#include <functional>
#include <memory>
#include <optional>
#include <set>
#include <string>
#include <utility>
#include <vector>

namespace ondrel::platform {
class Application;
class FileReader;
class Panels;
class Window;
struct Alert;
} // namespace ondrel::platform

namespace ondrel::highlights {

class HighlightStore;

// Highlights from a file into the store: one that an export has made, or that says it was, or a file of a
// store, also a damaged one. One for the process, main thread only.
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
  // The same with this file. False when the user has stopped it before anything was added.
  async::Task<bool> importFile(std::string path);

  // Of the import that is under way; absent while there is none.
  const base::Observable<std::optional<TransferProgress>>& progress() const { return progress_; }
  // Ends the present step of the import that is under way: what has been added, or labelled, stays.
  void stop() { stopRequested_ = true; }

 private:
  struct Read {
    std::vector<ExportedHighlight> highlights;
    bool isDamaged = false; // there was more in the file
  };
  // Why nothing was imported. Without a title the user has stopped it, and is told nothing.
  struct ImportProblem {
    std::string title;
    std::string text;
  };
  struct Merged {
    std::size_t imported = 0;
    std::size_t skipped = 0;
    bool isDamaged = false;                                 // there was more in the file
    std::set<std::string> threadIds;                        // of what was imported
    std::vector<std::pair<std::string, std::string>> all{}; // ids and Message-IDs
  };

  async::Task<bool> importFile(std::string path, std::shared_ptr<platform::Window> window);
  async::Task<std::expected<Merged, ImportProblem>> mergeFile(std::string path);
  async::Task<std::expected<Read, ImportProblem>> readHighlights(std::string path);
  async::Task<std::optional<std::string>> readText(std::string path);
  // Of the text.
  async::Task<std::expected<Read, ImportProblem>> decodeExport(const std::string& text, std::string path);
  async::Task<std::expected<Read, ImportProblem>> decodeStoreFile(const std::string& text, std::string path);
  // Until the step says that there are no more; false when the user has stopped it.
  async::Task<bool> inSlices(std::function<bool()> step);
  async::Task<Merged> merge(Read read);
  void add(ExportedHighlight highlight, Merged& merged);
  async::Task<void> show(std::set<std::string> threadIds);
  platform::Alert report(const Merged& merged) const;

  const Services services_;
  const base::Logger logger_{"system"};
  base::Observable<std::optional<TransferProgress>> progress_;
  bool stopRequested_ = false;
};

} // namespace ondrel::highlights
