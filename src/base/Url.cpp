#include "base/Url.h"

#include "base/Text.h"

#include <algorithm>
#include <cctype>

namespace ondrel::base {

namespace {

bool isHex(char c) {
  return std::isxdigit(static_cast<unsigned char>(c)) != 0;
}

int hexValue(char c) {
  if (c >= '0' && c <= '9')
    return c - '0';
  return (c | 0x20) - 'a' + 10;
}

// What RFC 3986 allows anywhere and engines leave raw, and all of UTF-8 beyond ASCII, which the caller has
// checked.
bool allowed(char c) {
  const auto byte = static_cast<unsigned char>(c);
  if (byte >= 0x80 || std::isalnum(byte))
    return true;
  return std::string_view("-._~:/?#[]@!$&'()*+,;=%|{}^\\`").contains(c);
}

bool wellFormed(std::string_view text) {
  return std::ranges::all_of(text, allowed) && isValidUtf8(text);
}

// Strict: what is odd here decides where a request goes.
bool isAuthority(std::string_view text) {
  for (std::size_t i = 0; i < text.size(); ++i)
    if (text[i] == '%' && (i + 2 >= text.size() || !isHex(text[i + 1]) || !isHex(text[i + 2])))
      return false;
  return text.find_first_of("|{}^\\`") == text.npos;
}

bool isScheme(std::string_view text) {
  if (text.empty() || !std::isalpha(static_cast<unsigned char>(text.front())))
    return false;
  return std::ranges::all_of(text, [](char c) {
    return std::isalnum(static_cast<unsigned char>(c)) || c == '+' || c == '-' || c == '.';
  });
}

void appendEncoded(std::string& result, char c) {
  constexpr std::string_view hexDigits = "0123456789ABCDEF";
  const auto byte = static_cast<unsigned char>(c);
  result.append({'%', hexDigits[byte >> 4], hexDigits[byte & 15]});
}

// Every byte percent-encoded but letters and digits of ASCII, and `kept`.
std::string encodedBut(std::string_view text, std::string_view kept) {
  std::string result;
  result.reserve(text.size());
  for (const char c : text) {
    const bool isAlphanumeric = (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9');
    if (isAlphanumeric || kept.contains(c))
      result += c;
    else
      appendEncoded(result, c);
  }
  return result;
}

std::string effectivePort(const Url& url) {
  if (url.port())
    return *url.port();
  const auto scheme = lowercasedAscii(url.scheme().value_or(""));
  return scheme == "https" ? "443" : scheme == "http" ? "80" : "";
}

} // namespace

std::optional<Url> Url::parse(std::string_view text) {
  if (text.empty() || !wellFormed(text))
    return std::nullopt;
  Url url;
  url.text_ = text;
  auto rest = text;

  if (const auto fragment = rest.find('#'); fragment != rest.npos)
    rest = rest.substr(0, fragment);
  if (const auto query = rest.find('?'); query != rest.npos) {
    url.query_ = rest.substr(query + 1);
    rest = rest.substr(0, query);
  }
  // A colon before the first slash must end a scheme (RFC 3986, 4.2): "a b:c" or ":x" is no relative
  // reference.
  const auto colon = rest.find(':');
  if (colon != rest.npos && colon < rest.find('/')) {
    if (!isScheme(rest.substr(0, colon)))
      return std::nullopt;
    url.scheme_ = rest.substr(0, colon);
    rest = rest.substr(colon + 1);
  }
  if (rest.starts_with("//")) {
    const auto end = rest.find('/', 2);
    auto authority = rest.substr(2, end == rest.npos ? rest.npos : end - 2);
    rest = end == rest.npos ? std::string_view() : rest.substr(end);
    if (!isAuthority(authority))
      return std::nullopt;
    if (const auto at = authority.rfind('@'); at != authority.npos)
      authority = authority.substr(at + 1);
    // Brackets are an IPv6 literal's and nothing else's.
    const auto bracket = authority.rfind(']');
    const bool hasLiteral = authority.starts_with('[') && bracket != authority.npos &&
                            authority.find('[', 1) == authority.npos && authority.find(']') == bracket;
    if (!hasLiteral && authority.find_first_of("[]") != authority.npos)
      return std::nullopt;
    const auto portColon = authority.find(':', bracket == authority.npos ? 0 : bracket);
    if (portColon != authority.npos) {
      const auto port = authority.substr(portColon + 1);
      if (!std::ranges::all_of(port, [](char c) { return c >= '0' && c <= '9'; }))
        return std::nullopt;
      if (!port.empty())
        url.port_ = port;
      authority = authority.substr(0, portColon);
    }
    if (!authority.empty())
      url.host_ = authority;
  }
  url.path_ = rest;
  return url;
}

std::string Url::hostWithPort() const {
  auto result = host_.value_or("");
  if (port_)
    result += ":" + *port_;
  return result;
}

std::string Url::lastPathComponent() const {
  auto path = std::string_view(path_);
  while (path.ends_with('/'))
    path.remove_suffix(1);
  const auto slash = path.rfind('/');
  return percentDecoded(slash == path.npos ? path : path.substr(slash + 1));
}

std::optional<std::string> Url::queryItem(std::string_view name) const {
  auto rest = query_ ? std::string_view(*query_) : std::string_view();
  while (!rest.empty()) {
    const auto end = rest.find('&');
    const auto item = rest.substr(0, end);
    rest = end == rest.npos ? std::string_view() : rest.substr(end + 1);
    const auto equals = item.find('=');
    if (equals != item.npos && percentDecoded(item.substr(0, equals)) == name)
      return percentDecoded(item.substr(equals + 1));
  }
  return std::nullopt;
}

bool Url::isWeb() const {
  const auto lower = lowercasedAscii(scheme_.value_or(""));
  return host_ && (lower == "http" || lower == "https");
}

bool Url::sameOrigin(const Url& other) const {
  return scheme_ && host_ && other.scheme_ && other.host_ &&
         lowercasedAscii(*scheme_) == lowercasedAscii(*other.scheme_) &&
         lowercasedAscii(*host_) == lowercasedAscii(*other.host_) &&
         effectivePort(*this) == effectivePort(other);
}

std::string percentDecoded(std::string_view text) {
  std::string result;
  result.reserve(text.size());
  for (std::size_t i = 0; i < text.size(); ++i) {
    if (text[i] == '%' && i + 2 < text.size() && isHex(text[i + 1]) && isHex(text[i + 2])) {
      result += static_cast<char>(hexValue(text[i + 1]) * 16 + hexValue(text[i + 2]));
      i += 2;
    } else {
      result += text[i];
    }
  }
  return result;
}

std::string percentEncodedPath(std::string_view text) {
  return encodedBut(text, "-._~!$&'()*+,;=:@/");
}

std::string percentEncodedQueryValue(std::string_view text) {
  return encodedBut(text, "-._~!$'()*,;:@/?");
}

std::string withEncodedDelimiters(std::string_view address) {
  std::string result;
  result.reserve(address.size());
  for (const char c : address)
    if (std::string_view(" \"<>").contains(c))
      appendEncoded(result, c);
    else
      result += c;
  return result;
}

} // namespace ondrel::base
