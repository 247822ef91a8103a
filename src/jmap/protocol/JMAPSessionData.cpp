#include "jmap/protocol/JMAPSessionData.h"

#include "base/JsonReader.h"
#include "base/Url.h"

#include <boost/json/object.hpp>

namespace ondrel::jmap {

namespace {

JMAPError malformed(std::string what) {
  return {JMAPError::Kind::malformed, "The JMAP session resource can't be read: " + std::move(what)};
}

// A reference as a client resolves it that knows the address it came from (RFC 3986, section 5), without dot
// segments: templates hold braces, which must stay.
std::string resolved(std::string_view reference, const base::Url& from) {
  if (reference.empty()) // names nothing, though by the RFC it would be the resource itself
    return "";
  const auto colon = reference.find_first_of(":/?#{");
  if (colon != std::string_view::npos && reference[colon] == ':')
    return std::string(reference);
  const std::string origin = *from.scheme() + "://" + from.hostWithPort();
  if (reference.starts_with("//"))
    return *from.scheme() + ":" + std::string(reference);
  if (reference.starts_with('/'))
    return origin + std::string(reference);
  return origin + from.path().substr(0, from.path().rfind('/') + 1) + std::string(reference);
}

} // namespace

Result<JMAPSessionData> JMAPSessionData::decode(const Result<boost::json::value>& document,
                                                std::string_view resourceUrl) {
  if (!document)
    return std::unexpected(document.error());
  const base::JsonReader members(*document);
  if (!members.object())
    return std::unexpected(malformed("no object"));

  const auto from = base::Url::parse(resourceUrl);
  JMAPSessionData data;
  const std::pair<std::string_view, std::string*> addresses[] = {
      {"apiUrl", &data.apiUrl}, {"eventSourceUrl", &data.eventSourceUrl}, {"downloadUrl", &data.downloadUrl}};
  for (const auto& [key, field] : addresses) {
    if (!members[key].read(*field))
      return std::unexpected(malformed("no " + std::string(key)));
    if (from && from->scheme() && from->host())
      *field = resolved(*field, *from);
  }
  if (!base::Url::parse(data.apiUrl))
    return std::unexpected(malformed("apiUrl is no URL"));

  const auto* accounts = members["primaryAccounts"].object();
  if (!accounts)
    return std::unexpected(malformed("no primaryAccounts"));
  for (const auto& [capability, account] : *accounts)
    if (!base::JsonReader(account).read(data.primaryAccounts[capability]))
      return std::unexpected(malformed("an account id is no string"));
  return data;
}

std::optional<std::string> mailAccountId(const JMAPSessionData& session) {
  const auto found = session.primaryAccounts.find(std::string(mailCapability));
  if (found == session.primaryAccounts.end())
    return std::nullopt;
  return found->second;
}

std::string accountParameter(std::string_view accountId) {
  if (accountId.starts_with('u'))
    accountId.remove_prefix(1);
  return std::string(accountId);
}

} // namespace ondrel::jmap
