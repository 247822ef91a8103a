#include "platform/linux/network/WebErrors.h"

#include "platform/linux/text/SafeText.h"

#include <webkit/webkit.h>

namespace ondrel::platform::network {

namespace {

int codeOfNetworkError(int code) {
  switch (code) {
  case WEBKIT_NETWORK_ERROR_CANCELLED:
    return WebError::cancelled;
  case WEBKIT_NETWORK_ERROR_UNKNOWN_PROTOCOL:
    return WebError::badURL;
  default:
    return WebError::unknown;
  }
}

int codeOfIoError(int code) {
  switch (code) {
  case G_IO_ERROR_CANCELLED:
    return WebError::cancelled;
  case G_IO_ERROR_TIMED_OUT:
    return WebError::timedOut;
  case G_IO_ERROR_HOST_NOT_FOUND:
    return WebError::cannotFindHost;
  case G_IO_ERROR_CONNECTION_REFUSED:
  case G_IO_ERROR_HOST_UNREACHABLE:
  case G_IO_ERROR_PROXY_FAILED:
  case G_IO_ERROR_PROXY_AUTH_FAILED:
  case G_IO_ERROR_PROXY_NEED_AUTH:
  case G_IO_ERROR_PROXY_NOT_ALLOWED:
    return WebError::cannotConnectToHost;
  case G_IO_ERROR_NETWORK_UNREACHABLE:
    return WebError::notConnectedToInternet;
  case G_IO_ERROR_CONNECTION_CLOSED: // a broken pipe has the same number
  case G_IO_ERROR_NOT_CONNECTED:
  case G_IO_ERROR_PARTIAL_INPUT:
    return WebError::networkConnectionLost;
  case G_IO_ERROR_INVALID_DATA:
    return WebError::badServerResponse;
  default:
    return WebError::unknown;
  }
}

int codeOfResolverError(int code) {
  // What the resolver says when no name server can be reached.
  return code == G_RESOLVER_ERROR_TEMPORARY_FAILURE ? WebError::notConnectedToInternet
                                                    : WebError::cannotFindHost;
}

int codeOfTlsError(int code) {
  return code == G_TLS_ERROR_BAD_CERTIFICATE ? WebError::serverCertificateUntrusted
                                             : WebError::secureConnectionFailed;
}

} // namespace

WebError webErrorFrom(const GError& error) {
  WebError result{WebError::Domain::network, WebError::unknown,
                  text::validUtf8(error.message ? error.message : "")};
  if (error.domain == WEBKIT_POLICY_ERROR) {
    result.domain = WebError::Domain::policy;
    result.code = error.code;
  } else if (error.domain == WEBKIT_NETWORK_ERROR) {
    result.code = codeOfNetworkError(error.code);
  } else if (error.domain == G_IO_ERROR) {
    result.code = codeOfIoError(error.code);
  } else if (error.domain == G_RESOLVER_ERROR) {
    result.code = codeOfResolverError(error.code);
  } else if (error.domain == G_TLS_ERROR) {
    result.code = codeOfTlsError(error.code);
  } else if (error.domain == SOUP_SESSION_ERROR) {
    result.code = WebError::badServerResponse; // what the server sent is no HTTP, or turns in circles
  }
  return result;
}

} // namespace ondrel::platform::network
