#include "jmap/protocol/LogExcerpt.h"

#include "base/Base64.h"

#include <algorithm>
#include <array>
#include <optional>

namespace ondrel::jmap {

namespace {

// Cookies with shorter values are switches, not secrets: without their name they would blot out any text.
constexpr std::size_t shortestSecret = 8;
// A character as "\u0041".
constexpr std::size_t longestEscape = 6;

struct Piece {
  char character;
  std::size_t size; // in the text
};

std::optional<char> fromHex(std::string_view digits) {
  unsigned value = 0;
  for (const char digit : digits) {
    const std::string_view all = "0123456789abcdef0123456789ABCDEF";
    const auto at = all.find(digit);
    if (at == std::string_view::npos)
      return std::nullopt;
    value = value * 16 + static_cast<unsigned>(at % 16);
  }
  return value < 256 ? std::optional(static_cast<char>(value)) : std::nullopt;
}

// The first character of a text that is not empty, with the escapes of addresses and of JSON undone.
Piece unescaped(std::string_view text) {
  const auto escape = [text](std::size_t mark, std::size_t digits) {
    return text.size() >= mark + digits ? fromHex(text.substr(mark, digits)) : std::nullopt;
  };
  if (text.front() == '%')
    if (const auto character = escape(1, 2))
      return {*character, 3};
  if (text.starts_with("\\u"))
    if (const auto character = escape(2, 4))
      return {*character, longestEscape};
  if (text.starts_with("\\/"))
    return {'/', 2};
  return {text.front(), 1};
}

// How much of the text's beginning says the secret, as it is or escaped in any way; 0 for none.
std::size_t saidAtStart(std::string_view text, std::string_view secret) {
  if (text.starts_with(secret))
    return secret.size();
  const auto whole = text.size();
  for (const char wanted : secret) {
    if (text.empty())
      return 0;
    const auto piece = unescaped(text);
    if (piece.character != wanted)
      return 0;
    text.remove_prefix(piece.size);
  }
  return whole - text.size();
}

// What base64 makes of the secret wherever it stands in what was encoded: three forms, each without the
// characters at its ends that depend on the neighbours, in both alphabets.
void addBase64(std::vector<std::string>& needles, std::string_view secret) {
  for (std::size_t before = 0; before < 3; ++before) {
    const auto padded = std::string(before, ' ') + std::string(secret);
    auto text = base::base64Encoded({reinterpret_cast<const std::uint8_t*>(padded.data()), padded.size()});
    text.resize(padded.size() * 8 / 6);
    text.erase(0, (before * 8 + 5) / 6);
    auto forAddresses = text;
    std::ranges::replace(forAddresses, '+', '-');
    std::ranges::replace(forAddresses, '/', '_');
    if (forAddresses != text)
      needles.push_back(std::move(forAddresses));
    needles.push_back(std::move(text));
  }
}

std::vector<std::string> needlesOf(const std::vector<std::string>& secrets) {
  auto needles = secrets;
  for (const auto& secret : secrets)
    if (secret.size() >= shortestSecret)
      addBase64(needles, secret);
  std::ranges::sort(needles, std::greater{},
                    &std::string::size); // the longer first: it may hold a shorter one
  return needles;
}

// The characters that one of them can begin with.
std::array<bool, 256> beginnings(const std::vector<std::string>& needles) {
  std::array<bool, 256> begins{};
  for (const auto& needle : needles)
    begins[static_cast<unsigned char>(needle.front())] = true;
  begins['%'] = begins['\\'] = true; // escapes
  return begins;
}

void addSecret(std::vector<std::string>& secrets, std::string_view text) {
  if (!text.empty())
    secrets.emplace_back(text);
}

} // namespace

std::string redactedStart(std::string_view text, std::size_t most, const std::vector<std::string>& secrets) {
  const auto needles = needlesOf(secrets);
  const auto begins = beginnings(needles);
  std::string start;
  while (start.size() < most && !text.empty()) {
    std::size_t said = 0;
    if (begins[static_cast<unsigned char>(text.front())])
      for (const auto& needle : needles)
        said = std::max(said, saidAtStart(text, needle));
    if (said > 0)
      start += "<private>";
    else
      start += text.front();
    text.remove_prefix(std::max<std::size_t>(said, 1));
  }
  start.resize(std::min(start.size(), most));
  return start;
}

std::vector<std::string> secretsOf(std::string_view authorization, std::string_view cookie) {
  std::vector<std::string> secrets;
  constexpr std::string_view bearer = "Bearer ";
  if (authorization.starts_with(bearer))
    authorization.remove_prefix(bearer.size());
  addSecret(secrets, authorization);
  while (!cookie.empty()) {
    const auto end = cookie.find("; ");
    const auto pair = cookie.substr(0, end);
    if (const auto equals = pair.find('='); equals != std::string_view::npos) {
      addSecret(secrets, pair);
      if (const auto value = pair.substr(equals + 1); value.size() >= shortestSecret)
        addSecret(secrets, value);
    }
    cookie.remove_prefix(end == std::string_view::npos ? cookie.size() : end + 2);
  }
  return secrets;
}

} // namespace ondrel::jmap
