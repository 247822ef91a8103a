#include "integrations/Announcement.h"

#include "base/JsonReader.h"
#include "base/LoopbackHost.h"
#include "base/Text.h"
#include "jmap/mail/ISO8601Date.h"

#include <boost/json/parse.hpp>

#include <algorithm>
#include <ranges>
#include <vector>

namespace ondrel::integrations {

namespace {

std::optional<std::string> optionalText(const base::JsonReader& from) {
  return from.isGiven() ? from.string() : std::nullopt;
}

Announcement::Severity severity(const base::JsonReader& from) {
  const auto name = from.string();
  if (name == "info")
    return Announcement::Severity::info;
  if (name == "warning")
    return Announcement::Severity::warning;
  if (name != "critical")
    from.complain("is no severity");
  return Announcement::Severity::critical;
}

std::optional<Announcement::Time> date(const base::JsonReader& from) {
  const auto text = optionalText(from);
  const auto time = text ? jmap::parseISO8601Date(*text) : std::nullopt;
  if (text && !time)
    from.complain("is not a date");
  return time;
}

bool mayOpen(const base::Url& url) {
  return url.isWeb() && url.host() &&
         (base::lowercasedAscii(*url.scheme()) == "https" || base::isLoopbackHost(*url.host()));
}

std::optional<base::Url> link(const base::JsonReader& from) {
  const auto text = optionalText(from);
  auto url = text ? base::Url::parse(*text) : std::nullopt;
  if (text && !url)
    from.complain("is not an address");
  return url && mayOpen(*url) ? std::move(url) : std::nullopt;
}

std::vector<long long> numbers(std::string_view version) {
  std::vector<long long> result;
  for (const auto piece : std::views::split(version, '.'))
    if (!piece.empty())
      result.push_back(base::parsedInteger(std::string_view(piece)).value_or(0));
  return result;
}

} // namespace

std::expected<Announcement, std::string> Announcement::decode(std::string_view text) {
  boost::system::error_code error;
  const auto value = boost::json::parse(text, error);
  if (error)
    return std::unexpected(error.message());
  std::optional<base::JsonFault> fault;
  const base::JsonReader reader(value, fault);
  Announcement result;
  reader["id"].read(result.id);
  reader["message"].read(result.message);
  result.severity = integrations::severity(reader["severity"]);
  result.minAppVersion = optionalText(reader["minAppVersion"]);
  result.maxAppVersion = optionalText(reader["maxAppVersion"]);
  result.expiresAt = date(reader["expiresAt"]);
  result.link = integrations::link(reader["link"]);
  if (fault)
    return std::unexpected((fault->path.empty() ? "It" : fault->path) + " " + fault->what);
  return result;
}

bool Announcement::isFor(std::string_view version) const {
  return !(minAppVersion && compareVersions(version, *minAppVersion) < 0) &&
         !(maxAppVersion && compareVersions(version, *maxAppVersion) > 0);
}

std::strong_ordering compareVersions(std::string_view a, std::string_view b) {
  auto left = numbers(a);
  auto right = numbers(b);
  const auto length = std::max(left.size(), right.size());
  left.resize(length);
  right.resize(length);
  return left <=> right;
}

} // namespace ondrel::integrations
