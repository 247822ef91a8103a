#pragma once

#include "mcp/HTTPRequestParser.h"
#include "mcp/HTTPResponse.h"

#include <expected>
#include <optional>
#include <string>
#include <string_view>

namespace ondrel::mcp {

// Whether a peer is this machine, in the addresses that are let in: no other loopback address is.
bool isAdmittedPeer(std::string_view host);

// The body to be answered by the RPC layer, or the answer to everything else. No answer holds anything of the
// request. The Host check keeps out web pages whose name was made to lead to this machine. Origin and
// Content-Type are not looked at: a page of any other name can post a simple request (text/plain, no
// preflight) and have it served, but without an Access-Control header it never gets to see the answer.
std::expected<std::string, HTTPResponse> rpcBody(std::optional<HTTPRequest> request);

} // namespace ondrel::mcp
