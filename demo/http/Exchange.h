#pragma once

#include <boost/json/fwd.hpp>
#include <libsoup/soup.h>

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace ondrel::demo::http {

// One HTTP request and its answer, as a handler sees them. Not to be kept after the handler returns.
class Exchange {
 public:
  explicit Exchange(SoupServerMessage* message) : message_(message) {}

  SoupServerMessage* message() const { return message_; }
  std::string_view method() const { return soup_server_message_get_method(message_); }
  // "http://" and the Host field, so the address under which the client knows the service.
  std::string origin() const;
  // The port of the connection.
  std::uint16_t port() const;
  // Lower case, without the port; empty when the request names none.
  std::string host() const;
  // Percent-decoded, so that an encoded slash in a name looks like any other.
  std::string path() const;
  // What follows a prefix of the path.
  std::string pathBelow(std::string_view prefix) const { return path().substr(prefix.size()); }
  std::optional<std::string> query(std::string_view name) const;
  // All of the query as it came; empty when there is none.
  std::string queryText() const;
  std::optional<std::string> header(const char* name) const;
  // A cookie with its value, "name=value".
  bool hasCookie(const std::string& cookie) const;
  std::string_view body() const;
  // One field of an application/x-www-form-urlencoded body.
  std::optional<std::string> formField(std::string_view name) const;
  // The body as a JSON object; empty when it is something else.
  boost::json::object jsonBody() const;

  void setHeader(const char* name, const std::string& value);
  void reply(unsigned status, const char* contentType, std::string_view body);
  void replyJson(const boost::json::value& value);
  // The answer is a file of that name, in full whatever characters it has (RFC 6266).
  void nameFile(const std::string& name, bool isAttachment);
  void replyFile(std::string_view bytes, const char* contentType, const std::string& name, bool isAttachment);
  // An error answer with one line of text.
  void refuse(unsigned status, std::string_view reason);
  void redirect(const std::string& location);

 private:
  SoupServerMessage* message_;
};

// What stands before the first slash and behind it; behind it nothing when there is none.
std::pair<std::string, std::string> split(const std::string& path);

} // namespace ondrel::demo::http
