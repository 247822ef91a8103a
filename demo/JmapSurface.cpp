#include "demo/JmapSurface.h"

#include "demo/EmailParts.h"
#include "demo/GLibPointers.h"
#include "demo/JmapApi.h"
#include "demo/JmapSessionResource.h"
#include "demo/SiteFile.h"

#include <algorithm>

namespace ondrel::demo {

namespace json = boost::json;

namespace {

constexpr std::string_view downloadPath = "/jmap/download/";

void replyProblem(Exchange& exchange, unsigned status, const json::object& problem) {
  exchange.setHeader("Cache-Control", "no-store");
  exchange.reply(status, "application/problem+json", json::serialize(problem));
}

// The type that a client asks for is its own choice, but has to fit a header line.
bool isMediaType(std::string_view type) {
  return type.contains('/') && type.size() < 200 &&
         std::ranges::all_of(type, [](char c) { return g_ascii_isprint(c); });
}

} // namespace

void JmapSurface::addTo(Router& router) {
  add(router, "/jmap/session", "GET", &JmapSurface::session);
  add(router, "/jmap/api/", "POST", &JmapSurface::api);
  add(router, "/jmap/event/", "GET", &JmapSurface::events);
  add(router, "/jmap/download/", "GET", &JmapSurface::download);
}

void JmapSurface::add(Router& router, const char* path, const char* method,
                      void (JmapSurface::*answer)(Exchange&)) {
  router.add(Site::web, path, [this, method, answer](Exchange& exchange) {
    if (!isAuthorized(exchange)) {
      exchange.setHeader("WWW-Authenticate", "Bearer");
      replyProblem(exchange, SOUP_STATUS_UNAUTHORIZED,
                   {{"type", "about:blank"}, {"status", 401}, {"title", "The token is missing or expired."}});
    } else if (exchange.method() != method) {
      exchange.refuse(SOUP_STATUS_METHOD_NOT_ALLOWED, "Not that way.");
    } else {
      (this->*answer)(exchange);
    }
  });
}

bool JmapSurface::isAuthorized(const Exchange& exchange) const {
  constexpr std::string_view scheme = "bearer ";
  const auto field = exchange.header("Authorization");
  return field && field->size() > scheme.size() &&
         g_ascii_strncasecmp(field->c_str(), scheme.data(), scheme.size()) == 0 &&
         tokens_.isValid(std::string_view(*field).substr(scheme.size()));
}

void JmapSurface::session(Exchange& exchange) {
  exchange.replyJson(sessionResource(exchange.origin(), userCapability(exchange.port())));
}

void JmapSurface::api(Exchange& exchange) {
  const auto answer = JmapApi(context_, userCapability(exchange.port()))
                          .answer(exchange.header("Content-Type").value_or(""), exchange.body());
  if (answer.status == 200)
    exchange.replyJson(answer.body);
  else
    replyProblem(exchange, answer.status, answer.body);
}

void JmapSurface::events(Exchange& exchange) {
  streams_.open(exchange);
}

void JmapSurface::download(Exchange& exchange) {
  const auto path = exchange.path().substr(downloadPath.size());
  const auto afterAccount = path.find('/');
  const auto afterBlob = afterAccount == std::string::npos ? afterAccount : path.find('/', afterAccount + 1);
  if (afterBlob == std::string::npos || path.substr(0, afterAccount) != mailAccountId) {
    exchange.refuse(SOUP_STATUS_NOT_FOUND, "Not found.");
    return;
  }
  const auto bytes = bytesOfBlob(context_.store, path.substr(afterAccount + 1, afterBlob - afterAccount - 1));
  const auto type = exchange.query("type").value_or("application/octet-stream");
  if (!bytes || !isMediaType(type)) {
    exchange.refuse(bytes ? SOUP_STATUS_BAD_REQUEST : SOUP_STATUS_NOT_FOUND,
                    "No such file, or no such type.");
    return;
  }
  const StringPtr name(g_uri_escape_string(path.c_str() + afterBlob + 1, nullptr, FALSE));
  exchange.setHeader("Content-Disposition", std::string("attachment; filename*=UTF-8''") + name.get());
  exchange.setHeader("Cache-Control", "private, immutable, max-age=31536000");
  exchange.setHeader("X-Content-Type-Options", "nosniff");
  exchange.reply(SOUP_STATUS_OK, type.c_str(), *bytes);
}

} // namespace ondrel::demo
