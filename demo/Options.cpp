#include "demo/Options.h"

#include <charconv>

namespace ondrel::demo {

std::expected<Options, std::string> parseOptions(const std::vector<std::string>& arguments) {
  Options options;
  for (std::size_t i = 0; i < arguments.size(); ++i) {
    const auto& name = arguments[i];
    if (name == "--until-eof") {
      options.untilEof = true;
      continue;
    }
    if (name != "--port" && name != "--control-port" && name != "--site-file" && name != "--ports-file")
      return std::unexpected("unknown option " + name);
    if (++i == arguments.size())
      return std::unexpected(name + " needs a value");
    const auto& value = arguments[i];
    if (name == "--site-file") {
      options.siteFile = value;
    } else if (name == "--ports-file") {
      options.portsFile = value;
    } else {
      auto& port = name == "--port" ? options.port : options.controlPort;
      const auto [end, error] = std::from_chars(value.data(), value.data() + value.size(), port);
      if (error != std::errc() || end != value.data() + value.size())
        return std::unexpected(name + " is no port number: " + value);
    }
  }
  return options;
}

} // namespace ondrel::demo
