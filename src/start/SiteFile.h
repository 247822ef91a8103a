#pragma once

#include "settings/Site.h"

#include <expected>
#include <string>

namespace ondrel::start {

// Reads the service's addresses from the file that ONDREL_SITE names, or else from site.json in `dataFolder`.
// The error is one line for standard error that names the file and the fault.
std::expected<settings::Site, std::string> loadSite(const std::string& dataFolder);

} // namespace ondrel::start
