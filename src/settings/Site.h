#pragma once

#include <expected>
#include <string>
#include <string_view>

namespace ondrel::settings {

// The addresses of the service and of the project, from site.json. Addresses of the service are always there;
// an empty address of the project switches off what needs it.
struct Site {
  struct ByEnvironment {
    std::string production;
    std::string beta;
  };

  ByEnvironment webAppBaseURL; // with a trailing "/"
  ByEnvironment jmapSessionURL;
  std::string userContentDomainSuffix; // of host names
  std::string serviceDomainFragment;   // found in the addresses of the service's own links
  std::string devUserCapability;

  std::string announcementFeedURL;
  std::string projectSiteURL;
  std::string projectFAQURL;
  std::string coffeeURL; // the two pages of DonationURL
  std::string paypalURL;
  std::string supportAddress;

  // The file's text in; an error names the key and what is wrong with it, for a person.
  static std::expected<Site, std::string> parse(std::string_view json);
};

} // namespace ondrel::settings
