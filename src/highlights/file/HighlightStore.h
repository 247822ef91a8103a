#pragma once

#include "base/Event.h"
#include "highlights/file/StoredHighlights.h"
#include "platform/KeptFile.h"

#include <map>
#include <optional>
#include <set>
#include <string>
#include <utility>
#include <vector>

namespace ondrel::highlights {

// The user's highlights by the Message-ID of their message, in memory and in highlights.json, which is saved
// with each change, and later when that fails. A list is never empty. What a second copy of the program has
// saved there meanwhile is merged by id before it is replaced: only what was added or removed here since the
// last reading or saving is as it is here. What can't be decoded is kept beside. One for the process, main
// thread only; reads the file when it is made.
class HighlightStore {
 public:
  using ByMessageId = std::map<std::string, std::vector<PersistedHighlight>>;

  // While one lives, changes are not saved; the last one to go saves them all at once.
  class Batch {
   public:
    explicit Batch(HighlightStore& store);
    Batch(const Batch&) = delete;
    Batch& operator=(const Batch&) = delete;
    ~Batch();

   private:
    HighlightStore& store_;
  };

  // Both outlive it.
  HighlightStore(platform::Directories& directories, platform::FileStore& files);

  const ByMessageId& byMessageId() const { return stored_.byMessageId; }
  // Of one message; empty where there are none.
  const std::vector<PersistedHighlight>& highlights(const std::string& messageId) const;

  void add(PersistedHighlight highlight, const std::string& messageId);
  void remove(const std::string& id, const std::string& messageId);
  // All that is known here: what another copy has saved since the last reading stays.
  void removeAll();

  std::set<std::string> allThreadIds() const;
  std::vector<std::pair<std::string, PersistedHighlight>> allHighlights() const;

  // Files with highlights that are not in this store: kept beside its own, the newest first, or that one
  // itself when it couldn't be read and nothing was saved since.
  std::vector<std::string> keptFiles() const { return file_.keptFiles(); }

  platform::KeptFile& file() { return file_; }
  // Of that highlight the file doesn't know yet what has become of it here.
  bool isUnsaved(const std::string& id, const std::string& messageId) const;

  // After the map has changed, whether it could be saved or not. Who hears it changes nothing here at once.
  base::Event<> changed;

 private:
  void save();
  std::expected<void, std::string> take(const std::string& text);
  void didSave(bool isSaved);
  void noteChange(const std::string& id, const std::string& messageId) { changes_[messageId].insert(id); }
  std::string encoded();

  StoredHighlights stored_;
  // Each message's member of the file but for the last bracket, since the file is written anew with each
  // change. Those that aren't here are made when they are needed.
  std::map<std::string, std::string> encoded_;
  // Ids added or removed since the last reading or saving, by Message-ID.
  std::map<std::string, std::set<std::string>> changes_;
  bool hasMerged_ = false; // something that nobody has been told of yet
  int batches_ = 0;
  bool isDirty_ = false; // in a batch
  platform::KeptFile file_;
};

} // namespace ondrel::highlights
