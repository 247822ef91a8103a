#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace ondrel::base {

// An absolute or relative URL reference (RFC 3986). A value: the text as given and its parts as they stand in
// it, percent-encoding included. Parsing refuses control characters, spaces, quotes and angle brackets; it
// never repairs. Behind the authority it lets pass what web engines leave as it is: braces, "^", "\", "|",
// "`" and a "%" of no meaning. Non-ASCII UTF-8 passes (RFC 3987), other bytes above 127 do not.
class Url {
 public:
  static std::optional<Url> parse(std::string_view text);

  const std::string& absoluteString() const { return text_; }
  const std::optional<std::string>& scheme() const { return scheme_; }
  // Without user information; an IPv6 literal keeps its brackets. Absent when there is no authority or it is
  // empty.
  const std::optional<std::string>& host() const { return host_; }
  // Digits after the host's colon, absent when there are none.
  const std::optional<std::string>& port() const { return port_; }
  const std::string& path() const { return path_; }
  const std::optional<std::string>& query() const { return query_; }

  // host, or host ":" port where a port stands in the text.
  std::string hostWithPort() const;
  // The last non-empty piece of the path, percent-decoded; empty when there is none.
  std::string lastPathComponent() const;
  // The decoded value of the first query item of that name; absent when there is none or it has no "=".
  std::optional<std::string> queryItem(std::string_view name) const;
  // Of the web: http or https, letters' case aside.
  bool isWeb() const;
  // Scheme, host and port are the same, with the default ports of http and https filled in, letters' case
  // aside.
  bool sameOrigin(const Url& other) const;

  bool operator==(const Url& other) const { return text_ == other.text_; }

 private:
  std::string text_;
  std::optional<std::string> scheme_;
  std::optional<std::string> host_;
  std::optional<std::string> port_;
  std::string path_;
  std::optional<std::string> query_;
};

// Percent-decoding of one component; sequences that are broken stay as they are.
std::string percentDecoded(std::string_view text);
// Any text as a part of a path: every byte percent-encoded but those of RFC 3986's pchar and "/".
std::string percentEncodedPath(std::string_view text);
// Any text as the value of a query item. Some readers take a raw "+" for a space, so it is encoded too.
std::string percentEncodedQueryValue(std::string_view text);
// An address as people and programs write it: spaces, quotes and angle brackets are percent-encoded, the rest
// stays.
std::string withEncodedDelimiters(std::string_view address);

} // namespace ondrel::base
