#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace ondrel::base {

// Well-formed UTF-8 (RFC 3629): no overlong forms, no surrogates, nothing above U+10FFFF.
bool isValidUtf8(std::string_view text);

// Letters A to Z in lower case, all else as it is, whatever the locale.
std::string lowercasedAscii(std::string_view text);

// Without white space and new lines of any script at both ends.
std::string_view trimmed(std::string_view text);

// A base-10 integer with an optional sign and nothing else around it; absent when it is none or too large.
std::optional<long long> parsedInteger(std::string_view text);

// One line that is safe to show in the program's own chrome: control characters become spaces, characters
// that change the direction of writing or can't be seen are left out, invalid UTF-8 becomes U+FFFD.
std::string displayLine(std::string_view text);

// The same of a text that may be of any length: laying out a long one takes time, and a line on the widest
// screen has fewer than 1000 bytes. "…" stands where it was cut.
std::string shortDisplayLine(std::string_view text);

// At most `limit` bytes from the start, cut between characters.
std::string_view cutAtCharacter(std::string_view text, std::size_t limit);

// For the text between tags and for attributes in double quotes, in HTML and in what Pango takes.
std::string escapedMarkup(std::string_view text);

// A base name that the program may use for a file of its own choosing in a folder of its own choosing:
// separators, control and direction characters replaced, no leading dots, at most 240 bytes, which leaves
// room for a suffix while it is written, cut at a character with the extension kept; `fallback` when nothing
// is left.
std::string safeFileName(std::string_view name, std::string_view fallback);

} // namespace ondrel::base
