#pragma once

#include "app/PersistedSession.h"
#include "platform/KeptFile.h"

#include <optional>
#include <string>
#include <string_view>

namespace ondrel::app {

// Writes and reads session.json, or another file of its form. Of two running copies the last to save wins.
class SessionStore {
 public:
  SessionStore(platform::Directories& directories, platform::FileStore& files,
               std::string_view fileName = "session.json");

  // What can't be saved is tried again as it was.
  void save(const PersistedSession& session);
  // Nothing when there is no file or it is none of ours.
  std::optional<PersistedSession> load();
  platform::KeptFile& file() { return file_; }

 private:
  std::string content_; // the last one to be saved, until it is
  std::optional<PersistedSession> loaded_;
  platform::KeptFile file_;
};

} // namespace ondrel::app
