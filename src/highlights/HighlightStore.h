#pragma once

#include "base/Event.h"
#include "base/Log.h"
#include "highlights/PersistedHighlight.h"
#include "platform/FileStore.h"
#include "platform/RetriedSave.h"

#include <map>
#include <optional>
#include <set>
#include <string>
#include <utility>
#include <vector>

namespace ondrel::highlights {

// The user's highlights by the Message-ID of their message, in memory and in highlights.json, which is saved
// with each change, and later when that fails. A list is never empty. What stands in the file's place and
// isn't what this store has read or saved there (it can't be decoded, or a second copy of the program has
// saved it) is kept beside it before a save replaces it. One for the process, main thread only; reads the
// file when it is made.
class HighlightStore {
 public:
  using ByMessageId = std::map<std::string, std::vector<PersistedHighlight>>;

  // Both outlive it.
  HighlightStore(platform::Directories& directories, platform::FileStore& files);

  const ByMessageId& byMessageId() const { return byMessageId_; }
  // Of one message; empty where there are none.
  const std::vector<PersistedHighlight>& highlights(const std::string& messageId) const;

  void add(PersistedHighlight highlight, const std::string& messageId);
  void remove(const std::string& id, const std::string& messageId);
  void removeAll();

  std::set<std::string> allThreadIds() const;
  std::vector<std::pair<std::string, PersistedHighlight>> allHighlights() const;

  // Of the file.
  platform::RetriedSave& saving() { return saving_; }

  base::Event<> changed; // after the map has changed, whether it could be saved or not

 private:
  std::optional<std::string> path() const;
  void load();
  void save();
  platform::RetriedSave::Result write();
  std::string encodedMap();

  base::Logger logger_{"system"};
  platform::Directories& directories_;
  platform::FileStore& files_;
  ByMessageId byMessageId_;
  // Each message's member of the file but for the last bracket, since the file is written anew with each
  // change. Those that aren't here are made when they are needed.
  std::map<std::string, std::string> encoded_;
  std::optional<platform::FileVersion> known_; // what we have read or saved last
  bool cantRead_ = false;                      // there was a file, and nothing of it could be used
  platform::RetriedSave saving_;
};

} // namespace ondrel::highlights
