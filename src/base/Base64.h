#pragma once

#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace ondrel::base {

using Bytes = std::vector<std::uint8_t>;

// RFC 4648, section 4, with padding.
std::string base64Encoded(std::span<const std::uint8_t> bytes);

// Strict: the standard alphabet, full padding, no white space, zero bits behind the last byte; absent
// otherwise.
std::optional<Bytes> base64Decoded(std::string_view text);

} // namespace ondrel::base
