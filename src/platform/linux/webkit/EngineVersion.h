#pragma once

#include <string>

namespace ondrel::platform::webkit {

// Of the library that is loaded: "2.50.1".
std::string engineVersion();

} // namespace ondrel::platform::webkit
