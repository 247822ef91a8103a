#include "mcp/HTTPRouting.h"

#include <algorithm>
#include <utility>

namespace ondrel::mcp {

namespace {

std::unexpected<HTTPResponse> plain(int status, const char* body) {
  return std::unexpected(HTTPResponse{.status = status, .body = body});
}

// Judges what stands before the port. Of an IPv6 literal that is "[".
bool isAdmittedHost(std::string_view value) {
  auto name = value;
  name.remove_prefix(std::min(name.find_first_not_of(':'), name.size()));
  name = name.substr(0, name.find(':'));
  return name == "localhost" || name == "127.0.0.1";
}

// Browsers name the page that a request comes from; programs have no reason to.
bool isAdmittedOrigin(std::string_view value) {
  for (const std::string_view scheme : {"http://", "https://"})
    if (value.starts_with(scheme)) {
      const auto host = value.substr(scheme.size());
      return isAdmittedHost(host) || host == "[::1]" || host.starts_with("[::1]:");
    }
  return false;
}

} // namespace

bool isAdmittedPeer(std::string_view host) {
  return host == "127.0.0.1" || host == "::1";
}

std::expected<std::string, HTTPResponse> rpcBody(std::optional<HTTPRequest> request) {
  if (!request)
    return plain(400, "Bad Request");
  if (request->host && !isAdmittedHost(*request->host))
    return plain(403, "Forbidden");
  if (request->method == "OPTIONS")
    return plain(204, "");
  if (request->origin && !isAdmittedOrigin(*request->origin))
    return plain(403, "Forbidden");
  if (request->method != "POST" || request->path != "/mcp")
    return plain(404, "Not Found");
  if (request->body.empty())
    return plain(400, "Missing body");
  return std::move(request->body);
}

} // namespace ondrel::mcp
