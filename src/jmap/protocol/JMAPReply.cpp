#include "base/Text.h"
#include "base/Translation.h"
#include "jmap/protocol/JMAPClient.h"
#include "jmap/protocol/LogExcerpt.h"

#include <algorithm>
#include <boost/json/parse.hpp>
#include <fmt/format.h>

namespace ondrel::jmap {

namespace {

// Deep enough for any MIME structure that a server tells of.
constexpr std::size_t deepestJson = 128;
// Far more than any reply has. What is parsed takes a hundred times the memory of its text when that is all
// commas and brackets, and the time of the main thread.
constexpr std::ptrdiff_t mostValues = 4'000'000;

Result<boost::json::value> parsed(const std::string& body) {
  const auto values = std::ranges::count_if(body, [](char c) { return c == ',' || c == '[' || c == '{'; });
  if (values > mostValues)
    return std::unexpected(
        JMAPError{JMAPError::Kind::malformed, base::trMark("The reply has too many values.")});
  boost::json::parse_options options;
  options.max_depth = deepestJson;
  boost::system::error_code failure;
  auto value = boost::json::parse(body, failure, {}, options);
  if (failure)
    return std::unexpected(
        JMAPError{JMAPError::Kind::malformed, "The reply is not valid JSON: " + failure.message()});
  return value;
}

} // namespace

JMAPReply JMAPReply::of(std::string body, std::vector<std::string> secrets) {
  auto json = parsed(body);
  return {std::move(body), std::move(json), std::move(secrets)};
}

std::string JMAPReply::excerpt(std::size_t most) const {
  auto start = redactedStart(body, most, secrets);
  if (base::isValidUtf8(start))
    return start;
  return fmt::format("<{} non-UTF8 bytes>", body.size());
}

std::string JMAPReply::withoutSecrets(std::string_view text) const {
  return redactedStart(text, text.size(), secrets);
}

} // namespace ondrel::jmap
