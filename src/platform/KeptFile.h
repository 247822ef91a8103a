#pragma once

#include "async/Timer.h"
#include "base/Log.h"
#include "base/Observable.h"
#include "platform/FileStore.h"

#include <chrono>
#include <expected>
#include <functional>
#include <optional>
#include <string>
#include <vector>

namespace ondrel::platform {

// A file of the program's own whose content is in memory. Nothing in its place is lost to a save: what
// another copy of the program has put there since is handed to the owner first, and what the owner can't use
// is kept beside. What couldn't be saved (a full disk) is tried again until it is. Main thread only, and
// synchronous: the owner merges while the folder is locked, and a change is on disk when the call returns, so
// that nothing has to be waited for when the program ends. Needs an event loop. The last member of its owner.
class KeptFile {
 public:
  static constexpr std::chrono::seconds firstRetry{5};
  static constexpr std::chrono::seconds laterRetries{30};

  // The path; absent where there is no folder for it.
  using Place = std::function<std::optional<std::string>()>;
  static Place inApplicationSupport(const Directories& directories, std::string name);

  // What the owner does.
  struct Content {
    // Takes what the file holds, but for what was changed here since the last load or save. Or says why it is
    // none of ours, and has changed nothing.
    std::function<std::expected<void, std::string>(const std::string& text)> take;
    std::function<std::string()> text;
    std::function<void(bool isSaved)> didSave; // may change the content again
  };
  // Beginnings of log lines: what went wrong, or a path, is their end. A save that fails as the one before
  // isn't told again.
  struct Words {
    std::string cantDecode;
    std::string cantSave;
    std::string isKept;
    std::string hasNoFolder = {};        // the whole line
    std::string hasNoFolderProblem = {}; // the same for the user
    std::string cantRead = {};           // without a word where this is empty
  };

  // `files` outlives it.
  KeptFile(FileStore& files, Place place, Words words, Content content);
  ~KeptFile() { saveIfUnsaved(); }

  void load();
  // What somebody else has put there since the last load or save is handed to the owner. What the owner can't
  // use changes nothing: it may be half written.
  void reload();
  void save();
  // With the next turn of the loop.
  void saveSoon();
  // What is to be saved soon, or couldn't be.
  void saveIfUnsaved();

  // Why the last save failed; absent when all is saved.
  const base::Observable<std::optional<std::string>>& problem() const { return problem_; }
  std::optional<std::string> path() const { return place_(); }
  // What is kept beside it, the newest first; at first the file itself if it couldn't be used and nothing was
  // saved since.
  std::vector<std::string> keptFiles() const;

 private:
  // The problem, if there is one.
  std::optional<std::string> write(const std::string& file);
  void retry();

  FileStore& files_;
  const Place place_;
  const Words words_;
  const Content content_;
  std::optional<FileVersion> known_; // what we have read or saved last
  std::optional<FileVersion> told_;  // what reload() couldn't use, and has said so
  bool isUnusable_ = false;          // there is a file, and it couldn't be taken
  bool isUnsaved_ = false;
  base::Observable<std::optional<std::string>> problem_;
  async::Timer soon_;
  async::Timer retry_;
  const base::Logger logger_{"system"};
};

} // namespace ondrel::platform
