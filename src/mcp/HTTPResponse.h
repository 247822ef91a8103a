#pragma once

#include <string>

namespace ondrel::mcp {

struct HTTPResponse {
  int status = 200;
  std::string body = {};
  std::string contentType = "text/plain";

  // As it goes over the connection, which ends behind it.
  std::string bytes() const;
};

} // namespace ondrel::mcp
