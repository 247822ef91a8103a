#include "demo/StorageSurface.h"

#include "demo/GLibPointers.h"

#include <boost/json.hpp>

namespace ondrel::demo {

namespace json = boost::json;

void StorageSurface::addTo(Router& router) {
  router.add(Site::web, "/data/upload", [this](Exchange& exchange) {
    if (mayPost(exchange))
      upload(exchange);
  });
  router.add(Site::web, "/data/share", [this](Exchange& exchange) {
    if (mayPost(exchange))
      share(exchange);
  });
}

bool StorageSurface::mayPost(Exchange& exchange) const {
  if (!signIn_.isSignedIn(exchange)) {
    exchange.refuse(SOUP_STATUS_UNAUTHORIZED, "Not signed in.");
    return false;
  }
  if (exchange.method() != "POST") {
    exchange.refuse(SOUP_STATUS_METHOD_NOT_ALLOWED, "Not that way.");
    return false;
  }
  return true;
}

void StorageSurface::upload(Exchange& exchange) {
  // Never the type that the page names: a shared file is shown as nothing but bytes.
  Blob blob{store_.newBlobId(), exchange.query("name").value_or("file"), "application/octet-stream",
            std::string(exchange.body())};
  const json::object answer{{"blobId", blob.id}, {"size", blob.bytes.size()}};
  store_.addBlob(std::move(blob));
  exchange.replyJson(answer);
}

void StorageSurface::share(Exchange& exchange) const {
  const auto body = exchange.jsonBody().value_or(json::object());
  const auto* id = body.if_contains("blobId");
  const auto* blob = id && id->is_string() ? store_.blob(std::string(id->get_string())) : nullptr;
  if (!blob) {
    exchange.refuse(SOUP_STATUS_NOT_FOUND, "No such file.");
    return;
  }
  const StringPtr name(g_uri_escape_string(blob->name.c_str(), nullptr, FALSE));
  exchange.replyJson(json::object{{"path", "/blob/" + blob->id + "/" + name.get()}});
}

} // namespace ondrel::demo
