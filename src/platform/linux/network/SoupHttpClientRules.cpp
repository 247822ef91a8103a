#include "platform/linux/network/SoupHttpClientRules.h"

#include "base/LoopbackHost.h"
#include "base/Text.h"
#include "base/Translation.h"

#include <libsoup/soup.h>

#include <algorithm>
#include <array>
#include <string_view>

namespace ondrel::platform::network {

namespace {

constexpr auto uriFlags = static_cast<GUriFlags>(SOUP_HTTP_URI_FLAGS);

std::unexpected<WebError> refusal(int code, const char* description) {
  return std::unexpected(WebError{WebError::Domain::network, code, description});
}

bool isControl(char c) {
  return static_cast<unsigned char>(c) < 0x20 || c == 0x7F;
}

// A method or the name of a header (RFC 9110, 5.6.2).
bool isToken(std::string_view text) {
  return !text.empty() && std::ranges::all_of(text, [](char c) {
    return g_ascii_isalnum(c) || std::string_view("!#$%&'*+-.^_`|~").contains(c);
  });
}

bool isCredential(const std::string& headerName) {
  static constexpr std::array<std::string_view, 3> names{"authorization", "cookie", "proxy-authorization"};
  return std::ranges::find(names, base::lowercasedAscii(headerName)) != names.end();
}

glib::Owned<GUri> parsed(const std::string& url) {
  // A NUL would hide from the parser what stands behind it; a space it would repair.
  if (std::ranges::any_of(url, [](char c) { return isControl(c) || c == ' '; }))
    return nullptr;
  glib::Owned<GUri> address(g_uri_parse(url.c_str(), uriFlags, nullptr));
  if (!address || g_uri_get_userinfo(address.get()))
    return nullptr;
  const std::string_view scheme = g_uri_get_scheme(address.get());
  const char* host = g_uri_get_host(address.get());
  return (scheme == "http" || scheme == "https") && host && *host ? std::move(address) : nullptr;
}

bool isHttps(GUri* address) {
  return std::string_view(g_uri_get_scheme(address)) == "https";
}

int portOf(GUri* address) {
  const int port = g_uri_get_port(address);
  return port > 0 ? port : isHttps(address) ? 443 : 80;
}

bool sameOrigin(GUri* a, GUri* b) {
  return isHttps(a) == isHttps(b) && portOf(a) == portOf(b) &&
         base::lowercasedAscii(g_uri_get_host(a)) == base::lowercasedAscii(g_uri_get_host(b));
}

bool becomesGet(const std::string& method, int status) {
  if (status == 303)
    return method != "GET" && method != "HEAD";
  return (status == 301 || status == 302) && method == "POST";
}

} // namespace

bool isLoopback(GUri* address) {
  return base::isLoopbackHost(g_uri_get_host(address));
}

HttpResult<glib::Owned<GUri>> checkedAddress(const HttpRequest& request) {
  auto address = parsed(request.url);
  if (!address)
    return refusal(WebError::badURL, base::trMark("The address of the request is none of the web."));
  if (!isToken(request.method))
    return refusal(WebError::badURL, base::trMark("The method of the request is none."));
  bool hasCredentials = false;
  for (const auto& [name, value] : request.headers) {
    if (!isToken(name) || std::ranges::any_of(value, isControl))
      return refusal(WebError::badURL, base::trMark("A header of the request is malformed."));
    hasCredentials |= isCredential(name);
  }
  if (hasCredentials && !isHttps(address.get()) && !isLoopback(address.get()))
    return refusal(WebError::secureConnectionFailed,
                   base::trMark("Credentials are not sent over a plain connection."));
  return address;
}

bool isRedirect(int status) {
  return status == 301 || status == 302 || status == 303 || status == 307 || status == 308;
}

HttpResult<HttpRequest> redirected(HttpRequest request, int status, const std::string& location) {
  const auto from = parsed(request.url);
  if (!from)
    return refusal(WebError::badURL, base::trMark("The address of the request is none of the web."));
  const glib::Owned<GUri> resolved(g_uri_parse_relative(from.get(), location.c_str(), uriFlags, nullptr));
  const auto to =
      resolved ? parsed(glib::CString(g_uri_to_string_partial(resolved.get(), G_URI_HIDE_FRAGMENT)).get())
               : nullptr;
  if (!to)
    return refusal(WebError::badServerResponse,
                   base::trMark("The server redirects to what is no address of the web."));
  if (isHttps(from.get()) && !isHttps(to.get()) && !isLoopback(to.get()))
    return refusal(WebError::secureConnectionFailed,
                   base::trMark("The server redirects to a plain connection."));

  if (becomesGet(request.method, status)) {
    request.method = "GET";
    request.body.clear();
    std::erase_if(request.headers, [](const auto& header) {
      return base::lowercasedAscii(header.first).starts_with("content-");
    });
  }
  if (!sameOrigin(from.get(), to.get())) {
    if (request.staysAtOrigin)
      return refusal(WebError::badServerResponse, base::trMark("The server redirects to another origin."));
    if (!request.body.empty())
      return refusal(WebError::badServerResponse,
                     base::trMark("The server redirects what was sent to another origin."));
    std::erase_if(request.headers, [](const auto& header) { return isCredential(header.first); });
  }
  request.url = glib::CString(g_uri_to_string(to.get())).get();
  return request;
}

} // namespace ondrel::platform::network
