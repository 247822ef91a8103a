// Saves one file: file_probe PATH SIZE [forever|known]. The content is SIZE times the same letter; with
// "forever" it saves again and again, with letters and sizes that change, with "known" it keeps what is there
// as something damaged. Exit status 1 tells that the save failed.

#include "platform/linux/files/PosixFileStore.h"

#include <cstdio>
#include <cstdlib>
#include <string>

using namespace ondrel::platform;

static std::optional<FileError> save(ondrel::platform::files::PosixFileStore& store, const std::string& path,
                                     const std::string& content, bool keeps) {
  if (keeps) {
    std::optional<FileVersion> none;
    const auto saved = store.replaceShared(
        path, [&](const auto* other) { return FileStore::Content{content, other != nullptr}; }, none);
    return saved ? std::nullopt : std::optional(saved.error());
  }
  const auto saved = store.writeAtomically(path, content);
  return saved ? std::nullopt : std::optional(saved.error());
}

int main(int argc, char** argv) {
  if (argc < 3)
    return 2;
  ondrel::platform::files::PosixFileStore store;
  const auto size = static_cast<std::size_t>(std::atoi(argv[2]));
  const std::string how = argc > 3 ? argv[3] : "";
  const bool forever = how == "forever";
  char letter = 'b';
  do {
    const std::string content(size + (forever ? letter * 100U : 0), letter);
    if (const auto error = save(store, argv[1], content, how == "known")) {
      std::fputs(error->description.c_str(), stderr);
      return 1;
    }
    letter = letter == 'z' ? 'b' : static_cast<char>(letter + 1);
  } while (forever);
  return 0;
}
