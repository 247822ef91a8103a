#include "demo/SiteFile.h"

#include "demo/GLibPointers.h"

#include <fmt/core.h>
#include <glib/gstdio.h>

namespace ondrel::demo {

std::string siteFileFor(std::uint16_t webPort) {
  return fmt::format(R"({{
  "WebAppBaseURL": {{
    "production": "http://localhost:{0}/",
    "beta": "http://beta.localhost:{0}/"
  }},
  "JMAPSessionURL": {{
    "production": "http://localhost:{0}/jmap/session",
    "beta": "http://beta.localhost:{0}/jmap/session"
  }},
  "UserContentDomainSuffix": "usercontent.localhost",
  "ServiceDomainFragment": "localhost:{0}",
  "DevUserCapability": "{1}",
  "AnnouncementFeedURL": "",
  "ProjectSiteURL": "",
  "ProjectFAQURL": "",
  "DonationURL": ["", ""],
  "SupportAddress": ""
}}
)",
                     webPort, userCapability(webPort));
}

std::string userCapability(std::uint16_t webPort) {
  return fmt::format("http://localhost:{}/dev/user", webPort);
}

std::expected<void, std::string> writeFile(const std::string& path, const std::string& text) {
  GError* raw = nullptr;
  if (!g_file_set_contents_full(path.c_str(), text.data(), static_cast<gssize>(text.size()),
                                G_FILE_SET_CONTENTS_CONSISTENT, 0600, &raw)) {
    const ErrorPtr error(raw);
    return std::unexpected(error->message);
  }
  return {};
}

} // namespace ondrel::demo
