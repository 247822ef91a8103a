// Saves one file: file_probe PATH SIZE [known]. The content is SIZE times the same letter; with "known" it
// keeps what is there as something damaged. Exit status 1 tells that the save failed.

#include "platform/linux/files/PosixFileStore.h"

#include <cstdio>
#include <cstdlib>
#include <expected>
#include <optional>
#include <string>

using namespace ondrel::platform;

int main(int argc, char** argv) {
  if (argc < 3)
    return 2;
  const std::string path = argv[1];
  const std::string content(static_cast<std::size_t>(std::atoi(argv[2])), 'b');
  files::PosixFileStore store;
  std::optional<FileVersion> none;
  const auto keeping = [&content](const auto* other) {
    return FileStore::Content{content, other != nullptr};
  };
  std::expected<void, FileError> saved;
  if (argc > 3) {
    if (const auto replaced = store.replaceShared(path, keeping, none); !replaced)
      saved = std::unexpected(replaced.error());
  } else {
    saved = store.writeAtomically(path, content);
  }
  if (!saved)
    std::fputs(saved.error().description.c_str(), stderr);
  return saved ? 0 : 1;
}
