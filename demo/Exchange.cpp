#include "demo/Exchange.h"

#include "demo/GLibPointers.h"
#include "demo/TakenConnection.h"

#include <boost/json.hpp>

#include <memory>

namespace ondrel::demo {

namespace {

using TablePtr = std::unique_ptr<GHashTable, FreeWith<g_hash_table_unref>>;

std::optional<std::string> lookup(GHashTable* table, const std::string& name) {
  if (!table)
    return std::nullopt;
  const auto* value = static_cast<const char*>(g_hash_table_lookup(table, name.c_str()));
  return value ? std::optional<std::string>(value) : std::nullopt;
}

} // namespace

std::string_view Exchange::method() const {
  return soup_server_message_get_method(message_);
}

std::string Exchange::host() const {
  const auto field = header("Host");
  if (!field)
    return {};
  const StringPtr lower(g_ascii_strdown(field->c_str(), -1));
  std::string host = lower.get();
  const auto colon = host.rfind(':');
  if (colon != std::string::npos && host.find(']', colon) == std::string::npos)
    host.resize(colon);
  return host;
}

std::string Exchange::origin() const {
  return "http://" + header("Host").value_or("localhost");
}

std::uint16_t Exchange::port() const {
  auto* address = soup_server_message_get_local_address(message_);
  return g_inet_socket_address_get_port(G_INET_SOCKET_ADDRESS(address));
}

std::string Exchange::path() const {
  const char* raw = g_uri_get_path(soup_server_message_get_uri(message_));
  const StringPtr decoded(g_uri_unescape_string(raw, nullptr));
  return decoded ? decoded.get() : raw;
}

std::optional<std::string> Exchange::query(std::string_view name) const {
  const char* text = g_uri_get_query(soup_server_message_get_uri(message_));
  if (!text)
    return std::nullopt;
  const TablePtr fields(soup_form_decode(text));
  return lookup(fields.get(), std::string(name));
}

std::string Exchange::queryText() const {
  const char* text = g_uri_get_query(soup_server_message_get_uri(message_));
  return text ? text : "";
}

std::optional<std::string> Exchange::header(const char* name) const {
  const char* value = soup_message_headers_get_one(soup_server_message_get_request_headers(message_), name);
  return value ? std::optional<std::string>(value) : std::nullopt;
}

std::optional<std::string> Exchange::cookie(std::string_view name) const {
  const auto field = header("Cookie");
  std::string_view rest = field ? std::string_view(*field) : std::string_view();
  while (!rest.empty()) {
    const auto end = rest.find(';');
    auto pair = rest.substr(0, end);
    rest = end == std::string_view::npos ? std::string_view() : rest.substr(end + 1);
    pair.remove_prefix(std::min(pair.find_first_not_of(' '), pair.size()));
    if (pair.starts_with(name) && pair.substr(name.size()).starts_with('='))
      return std::string(pair.substr(name.size() + 1));
  }
  return std::nullopt;
}

std::string_view Exchange::body() const {
  SoupMessageBody* body = soup_server_message_get_request_body(message_);
  const BytesPtr flat(soup_message_body_flatten(body));
  return {body->data ? body->data : "", static_cast<std::size_t>(body->length)};
}

std::optional<std::string> Exchange::formField(const char* name) const {
  const TablePtr fields(soup_form_decode(std::string(body()).c_str()));
  return lookup(fields.get(), name);
}

std::optional<boost::json::object> Exchange::jsonBody() const {
  boost::system::error_code error;
  auto value = boost::json::parse(body(), error);
  if (error || !value.is_object())
    return std::nullopt;
  return std::move(value.get_object());
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
  reply(SOUP_STATUS_OK, "application/json", boost::json::serialize(value));
}

void Exchange::refuse(unsigned status, std::string_view reason) {
  reply(status, "text/plain; charset=utf-8", std::string(reason) + "\n");
}

void Exchange::redirect(const std::string& location) {
  setHeader("Location", location);
  setHeader("Cache-Control", "no-store");
  reply(SOUP_STATUS_SEE_OTHER, "text/plain; charset=utf-8", "");
}

std::unique_ptr<TakenConnection> Exchange::takeConnection() {
  return std::make_unique<TakenConnection>(message_);
}

} // namespace ondrel::demo
