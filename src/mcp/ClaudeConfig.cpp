#include "mcp/ClaudeConfig.h"

#include "base/Translation.h"
#include "platform/FileStore.h"

#include <fmt/format.h>

#include <utility>

namespace ondrel::mcp {

namespace {

constexpr auto serversKey = "mcpServers";
constexpr auto entryName = "ondrel";

ConfigValue entry(std::int64_t port) {
  ConfigValue::Object members;
  members.emplace("type", ConfigValue(std::string("http")));
  members.emplace("url", ConfigValue(serverURL(port)));
  return ConfigValue(std::move(members));
}

// Whatever else somebody has added to it.
bool isEntry(ConfigValue& value, std::int64_t port) {
  auto* members = value.object();
  const auto holds = [&](const char* key, const std::string& text) {
    const auto found = members->find(key);
    return found != members->end() && found->second.isString(text);
  };
  return members && holds("type", "http") && holds("url", serverURL(port));
}

} // namespace

std::string serverURL(std::int64_t port) {
  return fmt::format("http://localhost:{}/mcp", port);
}

ClaudeConfig::ClaudeConfig(platform::Directories& directories, platform::FileStore& files)
    : directories_(directories), files_(files) {
}

std::optional<std::string> ClaudeConfig::path() const {
  const auto home = directories_.home();
  return home.empty() ? std::nullopt : std::optional(home + "/.claude.json");
}

bool ClaudeConfig::detect() const {
  for (const auto& program : {directories_.home() + "/.local/bin/claude",
                              std::string("/usr/local/bin/claude"), std::string("/usr/bin/claude")})
    if (files_.exists(program))
      return true;
  const auto file = path();
  return file && files_.exists(*file);
}

std::expected<ClaudeConfig::File, std::string> ClaudeConfig::read() const {
  const auto file = path();
  if (!file)
    return std::unexpected(base::tr("the user has no home folder"));
  auto text = files_.read(*file);
  if (!text && text.error().notFound)
    return File{};
  if (!text)
    return std::unexpected(std::move(text).error().description);
  auto value = ConfigValue::parse(*text);
  if (!value)
    return std::unexpected(base::trFormat("{0} is left alone: {1}", *file, value.error()));
  auto* object = value->object();
  return File{.text = *std::move(text), .config = object ? std::move(*object) : ConfigValue::Object()};
}

std::expected<void, std::string> ClaudeConfig::write(const File& file) {
  const auto text = ConfigValue(file.config).text();
  if (text == file.text)
    return {};
  if (const auto written = files_.rewriteShared(path().value_or(""), text); !written)
    return std::unexpected(written.error().description);
  return {};
}

std::expected<void, std::string> ClaudeConfig::registerServer(std::int64_t port) {
  auto file = read();
  if (!file)
    return std::unexpected(std::move(file).error());
  auto& servers = file->config[serversKey];
  // Then nothing is written, however the file is sorted and spaced.
  if (auto* known = servers.object())
    if (const auto found = known->find(entryName); found != known->end() && isEntry(found->second, port))
      return {};
  if (!servers.object())
    servers = ConfigValue();
  servers.object()->insert_or_assign(entryName, entry(port));
  return write(*file);
}

std::expected<void, std::string> ClaudeConfig::unregister() {
  auto file = read();
  if (!file)
    return std::unexpected(std::move(file).error());
  const auto servers = file->config.find(serversKey);
  auto* object = servers != file->config.end() ? servers->second.object() : nullptr;
  if (!object || object->erase(entryName) == 0)
    return {};
  return write(*file);
}

} // namespace ondrel::mcp
