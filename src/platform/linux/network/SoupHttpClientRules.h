#pragma once

#include "platform/HttpClient.h"
#include "platform/linux/glib/Ref.h"

#include <glib.h>

#include <string>

namespace ondrel::platform::network {

// The address of a request that may be sent: http or https without user information, no control characters
// anywhere, and no credentials in plain text to another machine. Decisions and connection both stand on this
// one GUri, so that no two parsers can disagree on the host.
HttpResult<glib::Owned<GUri>> checkedAddress(const HttpRequest& request);

// Whether the address leads to this machine (base::isLoopbackHost).
bool isLoopback(GUri* address);

// Whether a response of that status asks for another request, given that it has a Location.
bool isRedirect(int status);

// The request that such a response asks for (RFC 9110, 15.4), with what may not leave the origin taken out.
// Refused where it would lead from https to plain http on another machine, or to another origin a body or
// what stays at its own.
HttpResult<HttpRequest> redirected(HttpRequest request, int status, const std::string& location);

} // namespace ondrel::platform::network
