#pragma once

#include "async/Future.h"
#include "async/Task.h"
#include "base/Event.h"
#include "base/Log.h"
#include "base/Observable.h"
#include "highlights/HighlightDocument.h"
#include "highlights/TransferProgress.h"
#include "highlights/file/HighlightPayload.h"
#include "jmap/mail/MailQueries.h"

#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <set>
#include <string>
#include <vector>

namespace ondrel::platform {
class Application;
class FileStore;
class Panels;
class TextFormatting;
} // namespace ondrel::platform

namespace ondrel::settings {
class AppSettings;
}

namespace ondrel::highlights {

class HighlightStore;

// What the server has said of highlighted messages, by Message-ID. Those in neither member are unknown.
struct MessageLookup {
  std::map<std::string, jmap::HighlightExportInfo> found;
  std::set<std::string> missing; // aren't there any more
  std::string problem;           // why some could not be asked for, in a sentence; empty when all could
};

// Highlights out of the program, as one HTML page that people can read and the program too. One for the
// process, main thread only.
class HighlightExport {
 public:
  // All outlive it.
  struct Services {
    HighlightStore& store;
    jmap::MailQueries& mail;
    settings::AppSettings& settings;
    platform::Application& application;
    platform::Panels& panels;
    platform::FileStore& files;
    const platform::TextFormatting& textFormatting;
    // The program's icon on the page, the bytes of a PNG; empty for none.
    std::string iconPNG;
  };

  explicit HighlightExport(Services services);

  // For the program's own window, or for a file, which says how to bring it back.
  async::Task<std::string> generateHighlightsHTML(bool forFile);
  // Its two steps. Logs which messages aren't there.
  async::Task<MessageLookup> lookUp(std::set<std::string> messageIds,
                                    std::function<void(const TransferProgress&)> asked);
  // Of what the store holds now. Highlights of messages that aren't there are in the payload alone.
  HighlightDocument document(const MessageLookup& messages, bool forFile) const;
  // Looks the messages up on the server, then asks where to: on the key window, or on the one that was it
  // before. Without either it ends there.
  async::Task<void> exportHighlights();

  // Of the exports that are under way, until their panels come; absent while there is none.
  const base::Observable<std::optional<TransferProgress>>& progress() const { return progress_; }
  // Gives up the exports that are under way.
  void stop() { stopped_.emit(); }

 private:
  using Page = async::Resolver<std::optional<std::string>>;

  async::Task<std::string> generate(bool forFile, std::function<void(const TransferProgress&)> asked);
  // Absent when the user has stopped it.
  async::Task<std::optional<std::string>> generateForFile();
  async::Task<void> generateInto(std::shared_ptr<Page> page);
  std::vector<ExportedHighlight> newestFirst() const;
  std::optional<std::string> iconURL() const;

  const Services services_;
  const base::Logger logger_{"system"};
  base::Observable<std::optional<TransferProgress>> progress_;
  base::Event<> stopped_;
  int underWay_ = 0;
};

} // namespace ondrel::highlights
