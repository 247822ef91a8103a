#include "base/Base64.h"

#include <array>

namespace ondrel::base {

namespace {

constexpr std::string_view alphabet = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";

constexpr std::array<std::int8_t, 256> values = [] {
  std::array<std::int8_t, 256> table{};
  table.fill(-1);
  for (std::size_t i = 0; i < alphabet.size(); ++i)
    table[static_cast<std::uint8_t>(alphabet[i])] = static_cast<std::int8_t>(i);
  return table;
}();

} // namespace

std::string base64Encoded(std::span<const std::uint8_t> bytes) {
  std::string text;
  text.reserve((bytes.size() + 2) / 3 * 4);
  for (std::size_t i = 0; i < bytes.size(); i += 3) {
    const auto left = bytes.size() - i;
    const std::uint32_t group =
        bytes[i] << 16 | (left > 1 ? bytes[i + 1] << 8 : 0) | (left > 2 ? bytes[i + 2] : 0);
    text += alphabet[group >> 18];
    text += alphabet[group >> 12 & 63];
    text += left > 1 ? alphabet[group >> 6 & 63] : '=';
    text += left > 2 ? alphabet[group & 63] : '=';
  }
  return text;
}

std::optional<Bytes> base64Decoded(std::string_view text) {
  if (text.size() % 4 != 0)
    return std::nullopt;
  const std::size_t padding = text.ends_with("==") ? 2 : text.ends_with('=') ? 1 : 0;
  const auto digits = text.substr(0, text.size() - padding);
  Bytes bytes;
  bytes.reserve(text.size() / 4 * 3);
  std::uint32_t bits = 0;
  int count = 0;
  for (const char c : digits) {
    const auto value = values[static_cast<std::uint8_t>(c)];
    if (value < 0)
      return std::nullopt;
    bits = bits << 6 | static_cast<std::uint32_t>(value);
    count += 6;
    if (count >= 8) {
      count -= 8;
      bytes.push_back(static_cast<std::uint8_t>(bits >> count));
      bits &= (1U << count) - 1;
    }
  }
  if (bits != 0)
    return std::nullopt;
  return bytes;
}

} // namespace ondrel::base
