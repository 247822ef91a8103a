#include "mcp/HTTPRequestParser.h"

#include "base/Text.h"

#include <algorithm>

namespace ondrel::mcp {

namespace {

constexpr std::string_view lineEnd = "\r\n";
constexpr std::string_view blankLine = "\r\n\r\n";

// The value of the first line that begins with the name and its colon (in lower case), without spaces and
// tabs around it. The first line of the head is one like the others.
std::optional<std::string_view> firstValue(std::string_view head, std::string_view nameAndColon) {
  while (true) {
    const auto end = head.find(lineEnd);
    auto line = head.substr(0, end);
    if (base::lowercasedAscii(line.substr(0, nameAndColon.size())) == nameAndColon) {
      line.remove_prefix(nameAndColon.size());
      line.remove_prefix(std::min(line.find_first_not_of(" \t"), line.size()));
      return line.substr(0, line.find_last_not_of(" \t") + 1);
    }
    if (end == head.npos)
      return std::nullopt;
    head.remove_prefix(end + lineEnd.size());
  }
}

// Nothing when the head is not UTF-8: then no body can complete the request.
std::optional<long long> bodyLength(std::string_view head) {
  if (!base::isValidUtf8(head))
    return std::nullopt;
  const auto value = firstValue(head, "content-length:");
  return value ? base::parsedInteger(*value).value_or(0) : 0;
}

// Takes the next word off the line.
std::string_view takeWord(std::string_view& line) {
  line.remove_prefix(std::min(line.find_first_not_of(' '), line.size()));
  const auto word = line.substr(0, line.find(' '));
  line.remove_prefix(word.size());
  return word;
}

std::string uppercasedAscii(std::string_view text) {
  std::string result(text);
  std::ranges::transform(result, result.begin(),
                         [](char c) { return c >= 'a' && c <= 'z' ? static_cast<char>(c - 'a' + 'A') : c; });
  return result;
}

} // namespace

std::optional<HTTPRequest> parseHTTPRequest(std::string_view bytes) {
  const auto headLength = bytes.find(blankLine);
  if (headLength == bytes.npos)
    return std::nullopt;
  const auto head = bytes.substr(0, headLength);
  if (!base::isValidUtf8(head))
    return std::nullopt;

  auto firstLine = head.substr(0, head.find(lineEnd));
  const auto method = takeWord(firstLine);
  const auto path = takeWord(firstLine);
  if (path.empty())
    return std::nullopt;
  const auto host = firstValue(head, "host:");
  const auto origin = firstValue(head, "origin:");
  return HTTPRequest{.method = uppercasedAscii(method),
                     .path = std::string(path),
                     .host = host ? std::optional<std::string>(*host) : std::nullopt,
                     .origin = origin ? std::optional<std::string>(*origin) : std::nullopt,
                     .body = std::string(bytes.substr(headLength + blankLine.size()))};
}

bool HTTPRequestProgress::isComplete(std::string_view received) {
  if (!head_) {
    const auto headLength = received.find(blankLine, searched_);
    if (headLength == received.npos) {
      // A blank line may have begun in the last bytes.
      searched_ = received.size() - std::min(received.size(), blankLine.size() - 1);
      return false;
    }
    head_ = {headLength + blankLine.size(), bodyLength(received.substr(0, headLength))};
  }
  return head_->bodyLength && static_cast<long long>(received.size() - head_->end) >= *head_->bodyLength;
}

} // namespace ondrel::mcp
