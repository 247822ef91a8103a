#include "demo/http/Exchange.h"

#include "base/Json.h"
#include "base/Text.h"
#include "base/Url.h"
#include "platform/linux/glib/Ref.h"

#include <boost/json.hpp>

namespace ondrel::demo::http {

namespace {

std::optional<std::string> fieldOf(const std::string& encoded, std::string_view name) {
  const auto url = base::Url::parse("http://localhost/?" + encoded);
  return url ? url->queryItem(name) : std::nullopt;
}

} // namespace

std::string Exchange::origin() const {
  return "http://" + header("Host").value_or("");
}

std::uint16_t Exchange::port() const {
  auto* address = soup_server_message_get_local_address(message_);
  return g_inet_socket_address_get_port(G_INET_SOCKET_ADDRESS(address));
}

std::string Exchange::host() const {
  const auto url = base::Url::parse(origin());
  return base::lowercasedAscii(url ? url->host().value_or("") : "");
}

std::string Exchange::path() const {
  return base::percentDecoded(g_uri_get_path(soup_server_message_get_uri(message_)));
}

std::optional<std::string> Exchange::query(std::string_view name) const {
  return fieldOf(queryText(), name);
}

std::string Exchange::queryText() const {
  const char* text = g_uri_get_query(soup_server_message_get_uri(message_));
  return text ? text : "";
}

std::optional<std::string> Exchange::header(const char* name) const {
  const char* value = soup_message_headers_get_one(soup_server_message_get_request_headers(message_), name);
  return value ? std::optional<std::string>(value) : std::nullopt;
}

bool Exchange::hasCookie(const std::string& cookie) const {
  return ("; " + header("Cookie").value_or("") + ";").contains("; " + cookie + ";");
}

std::string_view Exchange::body() const {
  SoupMessageBody* body = soup_server_message_get_request_body(message_);
  const glib::Owned<GBytes> flat(soup_message_body_flatten(body));
  return {body->data ? body->data : "", static_cast<std::size_t>(body->length)};
}

std::optional<std::string> Exchange::formField(std::string_view name) const {
  return fieldOf(std::string(body()), name);
}

boost::json::object Exchange::jsonBody() const {
  boost::system::error_code error;
  const auto value = boost::json::parse(body(), error);
  return value.is_object() ? value.get_object() : boost::json::object();
}

void Exchange::setHeader(const char* name, const std::string& value) {
  soup_message_headers_replace(soup_server_message_get_response_headers(message_), name, value.c_str());
}

void Exchange::reply(unsigned status, const char* contentType, std::string_view body) {
  soup_server_message_set_status(message_, status, nullptr);
  soup_server_message_set_response(message_, contentType, SOUP_MEMORY_COPY, body.data(), body.size());
}

void Exchange::replyJson(const boost::json::value& value) {
  setHeader("Cache-Control", "no-store");
  reply(SOUP_STATUS_OK, "application/json", base::jsonText(value));
}

void Exchange::nameFile(const std::string& name, bool isAttachment) {
  const glib::CString encoded(g_uri_escape_string(name.c_str(), nullptr, FALSE));
  setHeader("Content-Disposition",
            std::string(isAttachment ? "attachment" : "inline") + "; filename*=UTF-8''" + encoded.get());
  setHeader("X-Content-Type-Options", "nosniff");
}

void Exchange::replyFile(std::string_view bytes, const char* contentType, const std::string& name,
                         bool isAttachment) {
  nameFile(name, isAttachment);
  reply(SOUP_STATUS_OK, contentType, bytes);
}

void Exchange::refuse(unsigned status, std::string_view reason) {
  reply(status, "text/plain; charset=utf-8", std::string(reason) + "\n");
}

void Exchange::redirect(const std::string& location) {
  setHeader("Location", location);
  setHeader("Cache-Control", "no-store");
  reply(SOUP_STATUS_SEE_OTHER, "text/plain; charset=utf-8", "");
}

std::pair<std::string, std::string> split(const std::string& path) {
  const auto slash = std::min(path.find('/'), path.size());
  return {path.substr(0, slash), slash < path.size() ? path.substr(slash + 1) : ""};
}

} // namespace ondrel::demo::http
