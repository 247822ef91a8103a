#include "start/SiteFile.h"

#include "base/Translation.h"

#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <fstream>
#include <sstream>

namespace ondrel::start {

std::expected<settings::Site, std::string> loadSite(const std::string& dataFolder) {
  const auto* named = std::getenv("ONDREL_SITE");
  const auto path = named && *named ? std::string(named) : dataFolder + "/site.json";
  errno = 0;
  std::ifstream file(path, std::ios::binary);
  std::ostringstream text;
  // A folder opens and then can't be read.
  if (!file || !(text << file.rdbuf()))
    return std::unexpected(base::trFormat("can't read the service's addresses from {0}: {1}", path,
                                          errno ? std::strerror(errno) : base::tr("it is empty")));
  auto site = settings::Site::parse(text.str());
  if (!site)
    return std::unexpected(
        base::trFormat("the service's addresses in {0} can't be used: {1}", path, site.error()));
  return std::move(*site);
}

} // namespace ondrel::start
