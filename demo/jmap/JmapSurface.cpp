#include "demo/jmap/JmapSurface.h"

#include "base/Json.h"
#include "base/Text.h"
#include "demo/jmap/JmapApi.h"
#include "demo/mail/SampleMail.h"

#include <boost/json.hpp>

namespace ondrel::demo::jmap {

namespace json = boost::json;

namespace {

void replyProblem(http::Exchange& exchange, unsigned status, const json::object& problem) {
  exchange.setHeader("Cache-Control", "no-store");
  exchange.reply(status, "application/problem+json", base::jsonText(problem));
}

json::object account(const std::string& name, const std::string& capability) {
  return {{"name", name},
          {"isPersonal", true},
          {"isReadOnly", false},
          {"accountCapabilities", {{capability, json::object()}}}};
}

// The Session object of RFC 8620, 2.
void session(http::Exchange& exchange) {
  const auto capability = userCapability(exchange.port());
  const auto user = mail::demoUser().email;
  const auto base = exchange.origin() + "/jmap/";
  exchange.replyJson(json::object{
      {"capabilities",
       {{coreCapability, {{"maxObjectsInGet", mostObjectsInGet}, {"maxObjectsInSet", mostObjectsInGet}}},
        {mailCapability, json::object()},
        {capability, json::object()}}},
      {"accounts",
       {{mailAccountId, account(user, mailCapability)},
        {userAccountId, account(user + " (preferences)", capability)}}},
      {"primaryAccounts",
       {{coreCapability, mailAccountId}, {mailCapability, mailAccountId}, {capability, userAccountId}}},
      {"username", user},
      {"apiUrl", base + "api/"},
      {"downloadUrl", base + "download/{accountId}/{blobId}/{name}?type={type}"},
      {"uploadUrl", base + "upload/{accountId}/"},
      {"eventSourceUrl", base + "event/?types={types}&closeafter={closeafter}&ping={ping}"},
      {"state", "session-1"}});
}

} // namespace

void JmapSurface::addTo(http::Router& router) {
  add(router, "GET", "/jmap/session", session);
  add(router, "POST", "/jmap/api/", [this](http::Exchange& exchange) { api(exchange); });
  add(router, "GET", "/jmap/event/", [this](http::Exchange& exchange) { streams_.open(exchange); });
  add(router, "GET", "/jmap/download/", [this](http::Exchange& exchange) { download(exchange); });
}

void JmapSurface::add(http::Router& router, const char* method, const char* path,
                      http::Router::Handler handler) {
  router.add(http::Site::web, method, path, [this, handler = std::move(handler)](http::Exchange& exchange) {
    const auto field = exchange.header("Authorization").value_or("");
    if (field.starts_with("Bearer ") && signIn_.isToken(std::string_view(field).substr(7))) {
      handler(exchange);
      return;
    }
    exchange.setHeader("WWW-Authenticate", "Bearer");
    replyProblem(exchange, SOUP_STATUS_UNAUTHORIZED,
                 {{"type", "about:blank"}, {"status", 401}, {"title", "The token is missing or expired."}});
  });
}

void JmapSurface::api(http::Exchange& exchange) const {
  const auto answer =
      answerJmap(context_, exchange.port(), exchange.header("Content-Type").value_or(""), exchange.body());
  if (answer.status == SOUP_STATUS_OK)
    exchange.replyJson(answer.body);
  else
    replyProblem(exchange, answer.status, answer.body);
}

void JmapSurface::download(http::Exchange& exchange) const {
  const auto [account, rest] = http::split(exchange.pathBelow("/jmap/download/"));
  const auto [blobId, name] = http::split(rest);
  const auto* blob = account == mailAccountId ? context_.store.blob(blobId) : nullptr;
  if (!blob || name.empty() || blob->generated > 0) {
    exchange.refuse(SOUP_STATUS_NOT_FOUND, "Not found.");
    return;
  }
  const auto type = base::displayLine(exchange.query("type").value_or("application/octet-stream"));
  exchange.replyFile(blob->bytes, type.c_str(), name, true);
}

} // namespace ondrel::demo::jmap
