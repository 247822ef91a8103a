#include "platform/linux/files/ThreadFileWriter.h"

#include "platform/linux/files/PosixFileStore.h"
#include "platform/linux/glib/OnThread.h"

namespace ondrel::platform::files {

async::Task<std::expected<void, FileError>> ThreadFileWriter::writeAtomically(std::string path,
                                                                              std::string content) {
  // The store is one for this work: it has a state, and other threads have theirs.
  const auto done = co_await glib::onThread([path = std::move(path), content = std::move(content)] {
    return PosixFileStore().writeAtomically(path, content);
  });
  co_return done.value_or(std::unexpected(FileError{false, "cancelled"}));
}

} // namespace ondrel::platform::files
