#pragma once

#include <string>

namespace ondrel::mcp {

struct HTTPResponse {
  int status = 200;
  std::string body = {};
  std::string contentType = "text/plain";

  // As it goes over the connection, which ends behind it.
  std::string bytes() const;
  bool operator==(const HTTPResponse&) const = default;
};

} // namespace ondrel::mcp
