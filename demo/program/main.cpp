#include "demo/GLibPointers.h"
#include "demo/Options.h"
#include "demo/PortsFile.h"
#include "demo/Service.h"
#include "demo/SiteFile.h"

#include <boost/json.hpp>
#include <fmt/core.h>
#include <glib-unix.h>
#include <unistd.h>

#include <cstdio>

using namespace ondrel::demo;

namespace {

using LoopPtr = std::unique_ptr<GMainLoop, FreeWith<g_main_loop_unref>>;

int failWith(const std::string& reason) {
  fmt::print(stderr, "ondrel-demo-service: {}\n", reason);
  return 2;
}

// The ports that were asked for, else those of the last run if they are still free, else any.
std::expected<std::unique_ptr<Service>, std::string> start(const Options& options) {
  const bool mayChoose = options.port == 0 && options.controlPort == 0 && !options.portsFile.empty();
  if (const auto last = mayChoose ? readPortsFile(options.portsFile) : std::nullopt) {
    auto service = std::make_unique<Service>();
    if (service->listen(last->web, last->control))
      return service;
  }
  auto service = std::make_unique<Service>();
  if (const auto listening = service->listen(options.port, options.controlPort); !listening)
    return std::unexpected(listening.error());
  return service;
}

std::expected<void, std::string> writeFiles(const Options& options, const Service& service) {
  if (!options.siteFile.empty()) {
    if (const auto written = writeFile(options.siteFile, siteFileFor(service.webPort())); !written)
      return written;
  }
  if (!options.portsFile.empty())
    return writeFile(options.portsFile, portsFileFor({service.webPort(), service.controlPort()}));
  return {};
}

gboolean quit(gpointer loop) {
  g_main_loop_quit(static_cast<GMainLoop*>(loop));
  return G_SOURCE_REMOVE;
}

gboolean quitAtEof(gint descriptor, GIOCondition, gpointer loop) {
  char bytes[256];
  if (read(descriptor, bytes, sizeof bytes) > 0)
    return G_SOURCE_CONTINUE;
  return quit(loop);
}

} // namespace

int main(int count, char** values) {
  const auto options = parseOptions({values + 1, values + count});
  if (!options)
    return failWith(options.error());
  const auto service = start(*options);
  if (!service)
    return failWith(service.error());
  if (const auto written = writeFiles(*options, **service); !written)
    return failWith(written.error());

  const LoopPtr loop(g_main_loop_new(nullptr, FALSE));
  g_unix_signal_add(SIGTERM, quit, loop.get());
  g_unix_signal_add(SIGINT, quit, loop.get());
  if (options->untilEof)
    g_unix_fd_add(STDIN_FILENO, GIOCondition(G_IO_IN | G_IO_HUP | G_IO_ERR), quitAtEof, loop.get());
  const boost::json::object ready{{"web", fmt::format("http://localhost:{}/", (*service)->webPort())},
                                  {"control", fmt::format("http://localhost:{}/", (*service)->controlPort())},
                                  {"siteFile", options->siteFile}};
  fmt::print("{}\n", boost::json::serialize(ready));
  std::fflush(stdout);
  g_main_loop_run(loop.get());
  return 0;
}
