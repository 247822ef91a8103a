// The bytes of a peer, as they go through the server: in pieces, until they are a request; then parsed,
// judged and answered.

#include "mcp/HTTPRequestParser.h"
#include "mcp/HTTPRouting.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <string_view>

namespace {

using namespace ondrel::mcp;

void require(bool holds) {
  if (!holds)
    std::abort();
}

bool isComplete(std::string_view received) {
  return HTTPRequestProgress().isComplete(received);
}

// However the bytes are cut, a request is complete at the same one.
void checkProgress(std::string_view bytes, std::size_t piece) {
  HTTPRequestProgress progress;
  for (std::size_t length = 0; length < bytes.size();) {
    length = std::min(length + piece, bytes.size());
    const auto received = bytes.substr(0, length);
    require(progress.isComplete(received) == isComplete(received));
  }
}

void checkAnswer(std::string_view bytes) {
  const auto request = parseHTTPRequest(bytes);
  if (isComplete(bytes))
    require(bytes.contains("\r\n\r\n"));
  const auto body = rpcBody(request);
  if (body) {
    require(!body->empty() && bytes.ends_with(*body));
    require(request->method == "POST" && request->path == "/mcp");
    require(!request->host || request->host->contains("localhost") || request->host->contains("127.0.0.1"));
    return;
  }
  const auto status = body.error().status;
  require(status == 204 || status == 400 || status == 403 || status == 404);
  require((status == 400) >= !request.has_value());
  require(body.error().bytes().size() < 150); // nothing of the request is in it
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  if (size == 0)
    return 0;
  const std::string_view bytes(reinterpret_cast<const char*>(data) + 1, size - 1);
  checkProgress(bytes, 1 + data[0] % 64U);
  checkAnswer(bytes);
  return 0;
}
