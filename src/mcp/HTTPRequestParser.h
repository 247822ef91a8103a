#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>

namespace ondrel::mcp {

// The little of an HTTP/1.1 request (RFC 9112) that the server looks at.
struct HTTPRequest {
  std::string method; // in upper case
  std::string path;   // as it was sent
  std::optional<std::string> host;
  std::optional<std::string> origin; // of the web page whose request it is
  std::string body;                  // everything behind the head, whatever Content-Length says
};

// Nothing when the bytes have no blank line, the head is not UTF-8, or its first line has not two words. Only
// the first Host and Origin count, and no other header counts at all.
std::optional<HTTPRequest> parseHTTPRequest(std::string_view bytes);

// Tells when a request that comes piece by piece is complete, and looks at no byte twice.
class HTTPRequestProgress {
 public:
  // `received` is all that has come so far: what it was the last time, and more. A Content-Length that is
  // missing, or that no number of 64 bits can hold, counts as 0; a negative one is reached at once.
  bool isComplete(std::string_view received);

 private:
  struct Head {
    std::size_t end; // where the body begins
    std::optional<long long> bodyLength;
  };

  std::size_t searched_ = 0;
  std::optional<Head> head_;
};

} // namespace ondrel::mcp
