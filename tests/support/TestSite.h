#pragma once

#include "settings/Site.h"

namespace ondrel::support {

inline settings::Site testSite() {
  settings::Site site;
  site.webAppBaseURL = {"https://app.example.com/", "https://beta.example.com/"};
  site.jmapSessionURL = {"https://api.example.com/jmap/session", "https://betaapi.example.com/jmap/session"};
  site.userContentDomainSuffix = ".usercontent.example";
  site.serviceDomainFragment = "example.com";
  site.devUserCapability = "https://www.example.com/dev/user";
  return site;
}

} // namespace ondrel::support
