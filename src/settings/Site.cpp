#include "settings/Site.h"

#include "base/JsonReader.h"
#include "base/LoopbackHost.h"
#include "base/Url.h"

#include <boost/json/parse.hpp>
#include <fmt/format.h>

namespace ondrel::settings {

namespace {

namespace json = boost::json;
using Problem = std::unexpected<std::string>;

// Empty where there is none.
std::string optionalText(const base::JsonReader& from) {
  return from.value() ? from.string().value_or("") : "";
}

std::string requiredText(const base::JsonReader& from) {
  auto result = optionalText(from);
  if (result.empty())
    from.complain("is missing or empty");
  return result;
}

std::string requiredAddress(const base::JsonReader& from) {
  auto result = requiredText(from);
  const auto url = base::Url::parse(result);
  // Plain http is for services on this machine.
  if (!result.empty() &&
      (!url || !url->isWeb() || (url->scheme() != "https" && !base::isLoopbackHost(*url->host()))))
    from.complain("is not an https address");
  return result;
}

std::string optionalAddress(const base::JsonReader& from) {
  return optionalText(from).empty() ? std::string() : requiredAddress(from);
}

Site::ByEnvironment byEnvironment(const base::JsonReader& from) {
  if (!from.value() || !from.value()->is_object())
    from.complain("is missing or not an object with \"production\" and \"beta\"");
  return {requiredAddress(from["production"]), requiredAddress(from["beta"])};
}

// Empty for anything but an address.
std::string donationPage(const base::JsonReader& from) {
  const auto page = from.string().value_or("");
  return base::Url::parse(page) ? page : "";
}

void endWithSlash(std::string& address) {
  if (!address.ends_with('/'))
    address += '/';
}

} // namespace

std::expected<Site, std::string> Site::parse(std::string_view text) {
  boost::system::error_code error;
  const auto value = json::parse(text, error);
  if (error)
    return Problem("it is not JSON: " + error.message());
  if (!value.is_object())
    return Problem("it is not a JSON object");

  std::optional<base::JsonFault> fault;
  const base::JsonReader reader(value, fault);
  Site site;
  site.webAppBaseURL = byEnvironment(reader["WebAppBaseURL"]);
  site.jmapSessionURL = byEnvironment(reader["JMAPSessionURL"]);
  site.userContentDomainSuffix = requiredText(reader["UserContentDomainSuffix"]);
  site.serviceDomainFragment = requiredText(reader["ServiceDomainFragment"]);
  site.devUserCapability = requiredText(reader["DevUserCapability"]);
  site.announcementFeedURL = optionalAddress(reader["AnnouncementFeedURL"]);
  site.projectSiteURL = optionalAddress(reader["ProjectSiteURL"]);
  site.projectFAQURL = optionalAddress(reader["ProjectFAQURL"]);
  site.supportAddress = optionalText(reader["SupportAddress"]);
  if (fault)
    return Problem(fmt::format("\"{}\" {}", fault->path, fault->what));
  const auto donation = base::JsonReader(value)["DonationURL"]; // one page or several
  site.coffeeURL = donationPage(donation.array() ? donation[0] : donation);
  site.paypalURL = donationPage(donation[1]);
  endWithSlash(site.webAppBaseURL.production);
  endWithSlash(site.webAppBaseURL.beta);
  return site;
}

} // namespace ondrel::settings
