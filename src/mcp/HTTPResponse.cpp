#include "mcp/HTTPResponse.h"

#include <fmt/format.h>

#include <string_view>

namespace ondrel::mcp {

namespace {

std::string_view reasonPhrase(int status) {
  switch (status) {
  case 200:
    return "OK";
  case 202:
    return "Accepted";
  case 204:
    return "No Content";
  case 400:
    return "Bad Request";
  case 403:
    return "Forbidden";
  case 404:
    return "Not Found";
  default:
    return "Error";
  }
}

} // namespace

std::string HTTPResponse::bytes() const {
  return fmt::format(
      "HTTP/1.1 {} {}\r\nContent-Type: {}\r\nContent-Length: {}\r\nConnection: close\r\n\r\n{}", status,
      reasonPhrase(status), contentType, body.size(), body);
}

} // namespace ondrel::mcp
