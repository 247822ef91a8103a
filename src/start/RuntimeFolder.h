#pragma once

#include <string>

namespace ondrel::start {

// The folder for sockets and the like, which the session gives each user. Where XDG_RUNTIME_DIR names none
// that can be used, the engine's sandbox and the toolkit's settings would fall back to the home, which may be
// full or closed: then it is an empty one, for the user alone, that goes with this object.
class RuntimeFolder {
 public:
  // Sets XDG_RUNTIME_DIR. Make it before anything asks for that folder.
  RuntimeFolder();
  ~RuntimeFolder();
  RuntimeFolder(const RuntimeFolder&) = delete;
  RuntimeFolder& operator=(const RuntimeFolder&) = delete;

 private:
  std::string temporary_; // empty where the session has one
};

} // namespace ondrel::start
