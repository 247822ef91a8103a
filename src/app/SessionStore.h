#pragma once

#include "app/PersistedSession.h"
#include "base/Log.h"
#include "platform/RetriedSave.h"

#include <optional>
#include <string>
#include <string_view>

namespace ondrel::platform {
class Directories;
class FileStore;
} // namespace ondrel::platform

namespace ondrel::app {

// Writes and reads session.json, or another file of its form. Both are synchronous and on the main thread:
// the file is small, and what is saved must be on disk when the program ends. What couldn't be saved is tried
// again as it was.
class SessionStore {
 public:
  SessionStore(platform::Directories& directories, platform::FileStore& files,
               std::string_view fileName = "session.json");

  // The previous file stays as it was when the write fails. A file that could not be read as a session is
  // kept aside under another name before the first save takes its place.
  void save(const PersistedSession& session);
  // Nothing when there is no file or it is none of ours.
  std::optional<PersistedSession> load();
  // Of the file.
  platform::RetriedSave& saving() { return saving_; }

 private:
  std::optional<std::string> path() const;
  platform::RetriedSave::Result write();

  const std::string fileName_;
  platform::Directories& directories_;
  platform::FileStore& files_;
  bool fileIsDamaged_ = false;
  std::string content_; // the last one to be saved, until it is
  platform::RetriedSave saving_;
  const base::Logger logger_{"system"};
};

} // namespace ondrel::app
