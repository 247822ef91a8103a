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
// request. Origin is not looked at and no Access-Control header is sent, so that a web page gets no further
// than its preflight; the Host check keeps out pages whose name was made to lead to this machine.
std::expected<std::string, HTTPResponse> rpcBody(std::optional<HTTPRequest> request);

} // namespace ondrel::mcp
