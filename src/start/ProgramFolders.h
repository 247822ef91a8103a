#pragma once

#include <string>

namespace ondrel::start {

// Where the program's own files lie: beside the executable in a build folder, or installed around it.
struct ProgramFolders {
  std::string executables;  // holds ondrel and its companions
  std::string data;         // holds site.json
  std::string translations; // holds <language>/LC_MESSAGES/ondrel.mo
  std::string extension;    // holds the web-process extension and nothing else
  std::string decoder;      // the program ondrel-decoder itself

  // `installedLibraries` is the library folder relative to the prefix, "lib/x86_64-linux-gnu" say.
  static ProgramFolders find(const std::string& installedLibraries);
};

} // namespace ondrel::start
