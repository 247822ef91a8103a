// An event stream in chunks of any size, against a reading of the whole text at once.

#include "jmap/protocol/EventLines.h"

#include <cstdint>
#include <cstdlib>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace {

using ondrel::jmap::EventLine;
using ondrel::jmap::EventLines;

std::vector<EventLine> inChunks(std::string_view stream, std::size_t chunk) {
  EventLines splitter;
  std::vector<EventLine> lines;
  while (!stream.empty()) {
    for (const auto& line : splitter.feed(stream.substr(0, chunk)))
      lines.push_back(line);
    stream.remove_prefix(std::min(chunk, stream.size()));
  }
  for (const auto& line : splitter.finish())
    lines.push_back(line);
  return lines;
}

std::optional<std::string> idIn(std::string_view line) {
  if (line != "id" && !line.starts_with("id:"))
    return std::nullopt;
  std::string id(line.size() > 3 && line[3] == ' ' ? line.substr(4) : line == "id" ? "" : line.substr(3));
  for (const char c : id)
    if ((c >= 0 && c < ' ') || c == 0x7F)
      return std::nullopt;
  return id.size() <= 256 ? std::optional(id) : std::nullopt;
}

std::vector<EventLine> atOnce(std::string_view stream) {
  std::vector<EventLine> lines;
  for (bool first = true; !stream.empty(); first = false) {
    const auto end = stream.find_first_of("\r\n");
    auto line = stream.substr(0, end);
    const auto lineEnd = end == stream.npos ? 0U : stream.substr(end).starts_with("\r\n") ? 2U : 1U;
    stream.remove_prefix(line.size() + lineEnd);
    const bool namesMailbox = line.contains("\"Mailbox\"");
    const bool namesEmail = line.contains("\"Email\"");
    if (first && line.starts_with("\xEF\xBB\xBF"))
      line.remove_prefix(3);
    lines.push_back({line.starts_with("data:"), namesMailbox, namesEmail, line.empty(), idIn(line)});
  }
  return lines;
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  if (size == 0)
    return 0;
  const std::string_view stream(reinterpret_cast<const char*>(data) + 1, size - 1);
  if (inChunks(stream, 1 + data[0] % 32U) != atOnce(stream))
    std::abort();
  return 0;
}
