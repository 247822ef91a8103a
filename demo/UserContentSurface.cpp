#include "demo/UserContentSurface.h"

#include "demo/GLibPointers.h"

namespace ondrel::demo {

namespace {

// RFC 6266: the name in full as filename*, since names can hold any character.
std::string disposition(const Exchange& exchange, const std::string& name) {
  const StringPtr encoded(g_uri_escape_string(name.c_str(), nullptr, FALSE));
  const bool isDownload = exchange.query("download").has_value();
  return std::string(isDownload ? "attachment" : "inline") + "; filename*=UTF-8''" + encoded.get();
}

std::string idIn(const Exchange& exchange, std::string_view prefix) {
  const auto rest = exchange.path().substr(prefix.size());
  return rest.substr(0, rest.find('/'));
}

} // namespace

void UserContentSurface::addTo(Router& router) {
  router.add(Site::userContent, "/blob/", [this](Exchange& exchange) { blob(exchange); });
  router.add(Site::userContent, "/source/", [this](Exchange& exchange) { source(exchange); });
}

void UserContentSurface::blob(Exchange& exchange) const {
  const auto* blob = store_.blob(idIn(exchange, "/blob/"));
  if (!blob) {
    exchange.refuse(SOUP_STATUS_NOT_FOUND, "No such file.");
    return;
  }
  exchange.setHeader("Content-Disposition", disposition(exchange, blob->name));
  exchange.setHeader("X-Content-Type-Options", "nosniff");
  exchange.reply(SOUP_STATUS_OK, blob->type.c_str(), blob->bytes);
}

void UserContentSurface::source(Exchange& exchange) const {
  const auto* email = store_.email(idIn(exchange, "/source/"));
  if (!email) {
    exchange.refuse(SOUP_STATUS_NOT_FOUND, "No such message.");
    return;
  }
  exchange.setHeader("Content-Disposition", disposition(exchange, email->id + ".eml"));
  exchange.setHeader("X-Content-Type-Options", "nosniff");
  exchange.reply(SOUP_STATUS_OK, "text/plain; charset=utf-8", sourceOf(*email));
}

} // namespace ondrel::demo
