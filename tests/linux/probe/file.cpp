// Saves one file: file_probe PATH SIZE [forever]. The content is SIZE times the same letter; with "forever"
// it saves again and again, with letters and sizes that change. Exit status 1 tells that the save failed.

#include "platform/linux/PosixFileStore.h"

#include <cstdio>
#include <cstdlib>
#include <string>

int main(int argc, char** argv) {
  if (argc < 3)
    return 2;
  ondrel::platform::PosixFileStore store;
  const auto size = static_cast<std::size_t>(std::atoi(argv[2]));
  const bool forever = argc > 3;
  char letter = 'b';
  do {
    const auto saved =
        store.writeAtomically(argv[1], std::string(size + (forever ? letter * 100U : 0), letter));
    if (!saved) {
      std::fputs(saved.error().description.c_str(), stderr);
      return 1;
    }
    letter = letter == 'z' ? 'b' : static_cast<char>(letter + 1);
  } while (forever);
  return 0;
}
