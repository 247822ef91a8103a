#include "demo/PortsFile.h"

#include "demo/GLibPointers.h"

#include <boost/json.hpp>
#include <fmt/core.h>

namespace ondrel::demo {

namespace {

std::optional<std::uint16_t> portIn(const boost::json::object& object, std::string_view key) {
  const auto* value = object.if_contains(key);
  if (!value || !value->is_int64() || value->get_int64() < 1 || value->get_int64() > 65535)
    return std::nullopt;
  return static_cast<std::uint16_t>(value->get_int64());
}

} // namespace

std::optional<Ports> parsePorts(const std::string& text) {
  boost::system::error_code error;
  const auto value = boost::json::parse(text, error);
  if (error || !value.is_object())
    return std::nullopt;
  const auto web = portIn(value.get_object(), "web");
  const auto control = portIn(value.get_object(), "control");
  return web && control ? std::optional(Ports{*web, *control}) : std::nullopt;
}

std::optional<Ports> readPortsFile(const std::string& path) {
  char* raw = nullptr;
  gsize size = 0;
  if (!g_file_get_contents(path.c_str(), &raw, &size, nullptr))
    return std::nullopt;
  const StringPtr text(raw);
  return parsePorts(std::string(text.get(), size));
}

std::string portsFileFor(Ports ports) {
  return fmt::format("{{\"web\": {}, \"control\": {}}}\n", ports.web, ports.control);
}

} // namespace ondrel::demo
