#pragma once

#include <boost/json/fwd.hpp>
#include <libsoup/soup.h>

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <string_view>

namespace ondrel::demo {

class TakenConnection;

// One HTTP request and its answer, as a handler sees them. Not to be kept after the handler returns.
class Exchange {
 public:
  explicit Exchange(SoupServerMessage* message) : message_(message) {}

  std::string_view method() const;
  // "http://" and the Host field, so the address under which the client knows the service.
  std::string origin() const;
  // The port of the connection.
  std::uint16_t port() const;
  // Lower case, without the port; empty when the request names none.
  std::string host() const;
  // Percent-decoded, so that an encoded slash in a name looks like any other; as it came when it can't be.
  std::string path() const;
  std::optional<std::string> query(std::string_view name) const;
  // All of the query as it came; empty when there is none.
  std::string queryText() const;
  std::optional<std::string> header(const char* name) const;
  std::optional<std::string> cookie(std::string_view name) const;
  std::string_view body() const;
  // One field of an application/x-www-form-urlencoded body.
  std::optional<std::string> formField(const char* name) const;
  // The body as a JSON object; none when it is something else.
  std::optional<boost::json::object> jsonBody() const;

  void setHeader(const char* name, const std::string& value);
  void reply(unsigned status, const char* contentType, std::string_view body);
  void replyJson(const boost::json::value& value);
  // An error answer with one line of text.
  void refuse(unsigned status, std::string_view reason);
  void redirect(const std::string& location);
  // Instead of an answer, the connection itself.
  std::unique_ptr<TakenConnection> takeConnection();

 private:
  SoupServerMessage* message_;
};

} // namespace ondrel::demo
