#include "settings/Site.h"

#include "base/LoopbackHost.h"
#include "base/Url.h"

#include <boost/json/parse.hpp>
#include <fmt/format.h>

#include <algorithm>

namespace ondrel::settings {

namespace {

namespace json = boost::json;
using Problem = std::unexpected<std::string>;

// Reads strings out of one JSON object and keeps the first thing that was wrong.
class Reader {
 public:
  Reader(const json::object& object, std::string prefix, std::string& problem)
      : object_(object), prefix_(std::move(prefix)), problem_(problem) {}

  std::string required(std::string_view key) {
    auto value = optional(key);
    if (value.empty())
      complain(key, "is missing or empty");
    return value;
  }

  std::string optional(std::string_view key) {
    const auto* value = object_.if_contains(key);
    if (!value)
      return {};
    if (const auto* text = value->if_string())
      return std::string(*text);
    complain(key, "is not a string");
    return {};
  }

  std::string requiredAddress(std::string_view key) {
    auto text = required(key);
    const auto url = base::Url::parse(text);
    // Plain http is for services on this machine.
    if (!text.empty() &&
        (!url || !url->isWeb() || (url->scheme() != "https" && !base::isLoopbackHost(*url->host()))))
      complain(key, "is not an https address");
    return text;
  }

  std::string optionalAddress(std::string_view key) {
    return optional(key).empty() ? std::string() : requiredAddress(key);
  }

  Site::ByEnvironment byEnvironment(std::string_view key) {
    const auto* value = object_.if_contains(key);
    if (!value || !value->is_object()) {
      complain(key, "is missing or not an object with \"production\" and \"beta\"");
      return {};
    }
    Reader inner(value->get_object(), std::string(key) + ".", problem_);
    return {inner.requiredAddress("production"), inner.requiredAddress("beta")};
  }

  void complain(std::string_view key, std::string_view what) {
    if (problem_.empty())
      problem_ = fmt::format("\"{}{}\" {}", prefix_, key, what);
  }

 private:
  const json::object& object_;
  std::string prefix_;
  std::string& problem_;
};

void readDonation(const json::object& object, Site& site) {
  const auto* pages = object.if_contains("DonationURL");
  if (!pages)
    return;
  const auto page = [](const json::value& value) {
    const auto* text = value.if_string();
    return text && base::Url::parse(*text) ? std::string(*text) : std::string();
  };
  if (const auto* list = pages->if_array()) {
    site.coffeeURL = !list->empty() ? page(list->at(0)) : "";
    site.paypalURL = list->size() > 1 ? page(list->at(1)) : "";
  } else {
    site.coffeeURL = page(*pages);
  }
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
  const auto* object = value.if_object();
  if (!object)
    return Problem("it is not a JSON object");

  std::string problem;
  Reader reader(*object, "", problem);
  Site site;
  site.webAppBaseURL = reader.byEnvironment("WebAppBaseURL");
  site.jmapSessionURL = reader.byEnvironment("JMAPSessionURL");
  site.userContentDomainSuffix = reader.required("UserContentDomainSuffix");
  site.serviceDomainFragment = reader.required("ServiceDomainFragment");
  site.devUserCapability = reader.required("DevUserCapability");
  site.announcementFeedURL = reader.optionalAddress("AnnouncementFeedURL");
  site.projectSiteURL = reader.optionalAddress("ProjectSiteURL");
  site.projectFAQURL = reader.optionalAddress("ProjectFAQURL");
  site.supportAddress = reader.optional("SupportAddress");
  readDonation(*object, site);
  if (!problem.empty())
    return Problem(problem);
  endWithSlash(site.webAppBaseURL.production);
  endWithSlash(site.webAppBaseURL.beta);
  return site;
}

} // namespace ondrel::settings
