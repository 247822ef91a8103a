#pragma once

#include "platform/NewFile.h"
#include "platform/linux/files/UniqueFd.h"

#include <expected>
#include <optional>
#include <string>
#include <sys/types.h>

namespace ondrel::platform::files {

// Where others (the engine, a printer) write a file that the user has chosen a place for, until it is whole:
// in a folder of its own beside that place, readable for the user alone. What is at the place meanwhile stays
// as it is unless the whole file takes its place. The folder goes with this object; those of a crash go when
// the next one is made beside them.
class PendingFile {
 public:
  // For an absolute path in UTF-8. What can't be replaced (a folder, say) is refused, and so is all that is
  // to stay. Errors are sentences for the user.
  static std::expected<PendingFile, std::string>
  make(const std::string& destination, NewFiles::Existing existing = NewFiles::Existing::isReplaced);
  PendingFile(PendingFile&& other) noexcept;
  PendingFile& operator=(PendingFile&&) = delete;
  ~PendingFile();

  // Isn't there yet. Its name is short, since the engine lengthens it while it writes.
  std::string path() const { return folder_ + "/file"; }
  // Something is at the place that nobody wants to be without.
  bool replaces() const { return replacedMode_.has_value(); }
  // Into its place. A link there is replaced and not followed; a file hands its permissions on. What has come
  // there since this object was made, and nobody has agreed to replace, stays, and this fails.
  std::expected<void, std::string> moveIntoPlace(bool isAgreed = false);

 private:
  PendingFile(std::string destination, std::optional<mode_t> replacedMode, std::string folder, UniqueFd lock);

  std::string destination_;
  std::optional<mode_t> replacedMode_; // absent: nothing was there
  std::string folder_;
  UniqueFd lock_; // on the folder, which tells it from a left-over
};

} // namespace ondrel::platform::files
