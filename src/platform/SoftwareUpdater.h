#pragma once

#include "async/Task.h"

#include <expected>
#include <functional>
#include <optional>
#include <string>

namespace ondrel::platform {

// Who brings new versions of the program.
enum class UpdateSource {
  packageService, // the machine's package system, which can be asked to
  sandbox,        // whoever made the sandbox
  elsewhere,      // nobody: the program doesn't come from the package that would be updated
  none,           // this machine has no such service
};

// A newer version of the program.
struct SoftwareUpdate {
  std::string identifier; // the package system's own
  std::string version;    // as users know it, "1.2"
  std::string notes;      // what is new, a few lines of plain text; empty where nobody tells

  bool operator==(const SoftwareUpdate&) const = default;
};

struct UpdateFault {
  enum class Kind {
    noNetwork,   // the machine is offline
    unreachable, // a package source doesn't answer
    untrusted,   // a package source or the package isn't signed by somebody whom the machine trusts
    refused,     // the user or the machine's rules don't allow it
    busy,        // another program is installing
    gone,        // that version isn't offered any more
    conflicts,   // it would take away other packages
    noSpace,
    noService,
    cancelled,
    other,
  };
  Kind kind = Kind::other;
  std::string details; // one line for the log
};

struct UpdateProgress {
  enum class Step { waiting, askingUser, downloading, installing };
  Step step = Step::waiting;
  std::optional<int> percentage; // absent while it can't be told

  bool operator==(const UpdateProgress&) const = default;
};

// Finds and installs new versions of this very program, and of nothing else but what they need. Only what is
// signed by somebody whom the machine trusts is ever offered, and never an older version. Dropping a task
// calls off what can be called off. Main thread only.
class SoftwareUpdater {
 public:
  using Progress = std::function<void(const UpdateProgress&)>;
  using Found = std::expected<std::optional<SoftwareUpdate>, UpdateFault>;
  using Done = std::expected<void, UpdateFault>;

  virtual ~SoftwareUpdater() = default;

  virtual async::Task<UpdateSource> source() = 0;
  // Reads the package sources anew and looks. None is given only when all of them could be read. `mayAsk`:
  // the user waits for it and may be asked for a password; else it is done in the background or not at all.
  virtual async::Task<Found> find(bool mayAsk) = 0;
  virtual async::Task<Done> download(SoftwareUpdate update, Progress progress) = 0;
  // The desktop may ask the user whether it is allowed.
  virtual async::Task<Done> install(SoftwareUpdate update, Progress progress) = 0;
  // The installed program is another than the running one, whoever installed it.
  virtual bool isReplaced() const = 0;
};

} // namespace ondrel::platform
