// Adds highlights to the file in a folder, over and over: highlight_probe FOLDER NAME [COUNT]. The ids are
// NAME-1, NAME-2, ...; each is written to standard output when it has been saved. Exit status 1 tells that a
// save failed.

#include "highlights/file/HighlightStore.h"
#include "platform/linux/files/PosixFileStore.h"
#include "support/FakeDesktop.h"

#include <cstdio>
#include <cstdlib>
#include <string>
#include <unistd.h>

int main(int argc, char** argv) {
  if (argc < 3)
    return 2;
  using namespace ondrel;
  base::setLogSink([](base::LogLevel level, std::string_view, std::string_view message) {
    if (level == base::LogLevel::error) {
      std::fprintf(stderr, "%.*s\n", static_cast<int>(message.size()), message.data());
      _exit(1);
    }
  });
  support::FakeFiles directories;
  directories.support = argv[1];
  platform::files::PosixFileStore files;
  highlights::HighlightStore store(directories, files);
  const std::string name = argv[2];
  const long count = argc > 3 ? std::atol(argv[3]) : 1'000'000;
  for (long number = 1; number <= count; ++number) {
    const auto id = name + "-" + std::to_string(number);
    store.add({id, "T1", std::string(500, 'x'), "", "", 0, 0.1},
              "message-" + std::to_string(number % 20) + "@example.com");
    const auto line = id + "\n";
    if (write(STDOUT_FILENO, line.data(), line.size()) < 0)
      return 2;
  }
  return 0;
}
