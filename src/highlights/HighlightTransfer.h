#pragma once

#include "async/Future.h"
#include "async/Task.h"
#include "base/Event.h"
#include "base/Log.h"
#include "base/Observable.h"
#include "highlights/HighlightPayload.h"
#include "platform/Panels.h"

#include <cstddef>
#include <expected>
#include <functional>
#include <memory>
#include <optional>
#include <set>
#include <string>
#include <vector>

namespace ondrel::jmap {
class MailQueries;
}

namespace ondrel::platform {
class Application;
class FileReader;
class FileStore;
class TextFormatting;
} // namespace ondrel::platform

namespace ondrel::settings {
class AppSettings;
}

namespace ondrel::highlights {

class HighlightStore;

// Highlights out of the program and back into it: as one HTML page that people can read. One for the process,
// main thread only.
class HighlightTransfer {
 public:
  // All outlive it.
  struct Services {
    HighlightStore& store;
    jmap::MailQueries& mail;
    settings::AppSettings& settings;
    platform::Application& application;
    platform::Panels& panels;
    platform::FileStore& files;
    platform::FileReader& reader;
    const platform::TextFormatting& textFormatting;
    // The program's icon on the page, the bytes of a PNG; empty for none.
    std::string iconPNG;
    // What follows an import that added something: the marks of the mailbox lists, then the labels.
    std::function<async::Task<void>()> pushMailboxMarks;
    // The latter gets a callback to tell how many are done, which says whether to go on.
    std::function<async::Task<void>(std::set<std::string> threadIds, std::function<bool(std::size_t done)>)>
        syncTags;
  };

  struct Progress {
    enum class Step { asking, reading, adding, labelling };

    Step step = Step::reading;
    std::size_t done = 0; // messages, highlights or threads
    std::size_t total = 0;

    bool operator==(const Progress&) const = default;
  };

  explicit HighlightTransfer(Services services);

  // For the program's own window, or for a file, which says how to bring it back.
  async::Task<std::string> generateHighlightsHTML(bool forFile);
  // Looks the messages up on the server and asks where to; without a key window it does nothing.
  async::Task<void> exportHighlights();
  // Asks which file and adds what isn't there yet. Imports take place one after the other.
  async::Task<void> importHighlights();

  // Of the import that is under way; absent while there is none.
  const base::Observable<std::optional<Progress>>& importProgress() const { return progress_; }
  // Ends the present step of the import that is under way: what has been added, or labelled, stays.
  void stopImport() { stopRequested_ = true; }
  // Of the exports that are under way, until their panels come.
  const base::Observable<std::optional<Progress>>& exportProgress() const { return exportProgress_; }
  // Gives up the exports that are under way.
  void stopExport() { exportStopped_.emit(); }

 private:
  using Parent = std::shared_ptr<platform::Window>;
  using Highlights = std::vector<ExportedHighlight>;

  using Looked = std::function<void(const Progress&)>;
  using Page = async::Resolver<std::optional<std::string>>;

  async::Task<std::string> generate(bool forFile, Looked looked);
  // Absent when the user has stopped it.
  async::Task<std::optional<std::string>> generateForFile();
  async::Task<void> generateInto(std::shared_ptr<Page> page);
  std::vector<ExportedHighlight> newestFirst() const;
  std::optional<std::string> iconURL() const;

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
  async::Task<void> tell(std::string title, std::string text, Parent parent);

  const Services services_;
  const base::Logger logger_{"system"};
  base::Observable<std::optional<Progress>> progress_;
  bool stopRequested_ = false;
  base::Observable<std::optional<Progress>> exportProgress_;
  base::Event<> exportStopped_;
  int exports_ = 0;
};

} // namespace ondrel::highlights
