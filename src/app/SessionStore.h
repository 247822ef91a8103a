#pragma once

#include "app/PersistedSession.h"
#include "base/Log.h"

#include <optional>
#include <string>

namespace ondrel::platform {
class Directories;
class FileStore;
} // namespace ondrel::platform

namespace ondrel::app {

// Writes and reads session.json. Both are synchronous and on the main thread: the file is small, and what is
// saved must be on disk when the program ends. Failures are log lines, never more.
class SessionStore {
 public:
  SessionStore(platform::Directories& directories, platform::FileStore& files);

  // The previous file stays as it was when the write fails. A file that could not be read as a session is
  // kept aside under another name before the first save takes its place.
  void save(const PersistedSession& session);
  // Nothing when there is no file or it is none of ours.
  std::optional<PersistedSession> load();

 private:
  std::optional<std::string> path() const;

  platform::Directories& directories_;
  platform::FileStore& files_;
  bool fileIsDamaged_ = false;
  const base::Logger logger_{"system"};
};

} // namespace ondrel::app
