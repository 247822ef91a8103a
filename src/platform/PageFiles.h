#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace ondrel::platform {

// A file that the user has dropped on a page or pasted into it, as the page will see it.
struct PageFile {
  std::string path;
  std::string name; // base name, valid UTF-8
  std::string type; // MIME; empty when unknown
  std::uint64_t size = 0;
  std::int64_t modified = 0; // milliseconds since 1970
};

// A picture without a file: its bytes as some image format.
struct PagePicture {
  std::string type; // MIME
  std::string content;
};

// Something that was dropped or pasted and did not get to the page.
struct RefusedFile {
  enum class Reason { folder, unreadable };
  std::string name; // valid UTF-8
  Reason reason = Reason::unreadable;
};

// A picture on the clipboard may have so many bytes.
inline constexpr std::size_t largestPastedPicture = std::size_t{32} << 20;
// And so many files may come at once.
inline constexpr std::size_t mostFilesAtOnce = 500;

// What the user is told of it, in one line; nothing when there is nothing to tell.
std::optional<std::string> refusalText(const std::vector<RefusedFile>& refused);

} // namespace ondrel::platform
