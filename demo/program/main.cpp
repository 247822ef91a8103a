#include "base/Json.h"
#include "base/JsonReader.h"
#include "demo/Service.h"
#include "demo/jmap/JmapApi.h"
#include "platform/linux/glib/GlibEventLoop.h"

#include <boost/json.hpp>
#include <fmt/core.h>
#include <glib-unix.h>
#include <unistd.h>

#include <cstdio>
#include <memory>
#include <utility>

using namespace ondrel;

namespace {

using Ports = std::pair<std::uint16_t, std::uint16_t>; // of the web application and of the orders

struct Options {
  int port = 0;
  int controlPort = 0;
  glib::CString siteFile;
  glib::CString portsFile;
  gboolean untilEof = FALSE;
  int attachmentMail = 0;
};

int failWith(const std::string& reason) {
  fmt::print(stderr, "ondrel-demo-service: {}\n", reason);
  return 2;
}

// What is wrong with the command line, or nothing.
std::string readOptions(Options& options, int count, char** values) {
  char* siteFile = nullptr;
  char* portsFile = nullptr;
  const GOptionEntry entries[] = {
      {"port", 0, 0, G_OPTION_ARG_INT, &options.port, "Port of the web application; 0 takes a free one", "N"},
      {"control-port", 0, 0, G_OPTION_ARG_INT, &options.controlPort, "Port for orders; likewise", "N"},
      {"site-file", 0, 0, G_OPTION_ARG_FILENAME, static_cast<void*>(&siteFile),
       "Write the address file for the program", "PATH"},
      {"ports-file", 0, 0, G_OPTION_ARG_FILENAME, static_cast<void*>(&portsFile),
       "Remember the ports for the next start", "PATH"},
      {"until-eof", 0, 0, G_OPTION_ARG_NONE, &options.untilEof, "End with standard input", nullptr},
      {"attachment-mail", 0, 0, G_OPTION_ARG_INT, &options.attachmentMail,
       "Begin with so many more emails that have attachments", "N"},
      {}};
  GOptionContext* context = g_option_context_new(nullptr);
  g_option_context_add_main_entries(context, entries, nullptr);
  glib::Error error;
  g_option_context_parse(context, &count, &values, error.out());
  g_option_context_free(context);
  options.siteFile.reset(siteFile);
  options.portsFile.reset(portsFile);
  if (error)
    return error.message();
  for (const int port : {options.port, options.controlPort})
    if (port < 0 || port > 65535)
      return "no port number: " + std::to_string(port);
  return count > 1 ? std::string("unknown argument ") + values[1] : "";
}

// The ports of the last run; 0 for those that aren't known.
Ports lastPorts(const char* path) {
  char* text = nullptr;
  g_file_get_contents(path, &text, nullptr, nullptr);
  const glib::CString owned(text);
  boost::system::error_code error;
  const auto value = boost::json::parse(text ? text : "", error);
  const auto port = [&value](const char* name) {
    const auto number = base::JsonReader(value)[name].wholeNumber().value_or(0);
    return std::in_range<std::uint16_t>(number) ? static_cast<std::uint16_t>(number) : std::uint16_t{0};
  };
  return {port("web"), port("control")};
}

// Whole and for the user alone. What went wrong, or nothing.
std::string write(const glib::CString& path, const std::string& text) {
  glib::Error error;
  if (path)
    g_file_set_contents_full(path.get(), text.data(), static_cast<gssize>(text.size()),
                             G_FILE_SET_CONTENTS_CONSISTENT, 0600, error.out());
  return error.message();
}

// The address file that points the program at this service, for people to read as well.
std::string siteFor(std::uint16_t port) {
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
  "AnnouncementFeedURL": "http://localhost:{0}/announcement.json",
  "ProjectSiteURL": "",
  "ProjectFAQURL": "",
  "DonationURL": ["", ""],
  "SupportAddress": ""
}}
)",
                     port, demo::jmap::userCapability(port));
}

gboolean quit(gpointer loop) {
  g_main_loop_quit(static_cast<GMainLoop*>(loop));
  return G_SOURCE_REMOVE;
}

gboolean quitAtEof(gint descriptor, GIOCondition, gpointer loop) {
  char bytes[256];
  return read(descriptor, bytes, sizeof bytes) > 0 ? G_SOURCE_CONTINUE : quit(loop);
}

} // namespace

int main(int count, char** values) {
  Options options;
  if (const auto problem = readOptions(options, count, values); !problem.empty())
    return failWith(problem);
  const glib::GlibEventLoop events;
  auto service = std::make_unique<demo::Service>();
  // The ports of the last run may be taken by now.
  const bool mayChoose = options.portsFile && options.port == 0 && options.controlPort == 0;
  const auto [web, control] = mayChoose ? lastPorts(options.portsFile.get()) : Ports();
  if (!mayChoose || !service->listen(web, control)) {
    service = std::make_unique<demo::Service>();
    const auto listening = service->listen(static_cast<std::uint16_t>(options.port),
                                           static_cast<std::uint16_t>(options.controlPort));
    if (!listening)
      return failWith(listening.error());
  }
  service->addAttachmentMail(options.attachmentMail);
  const auto ports =
      fmt::format("{{\"web\": {}, \"control\": {}}}\n", service->webPort(), service->controlPort());
  for (const auto& problem :
       {write(options.siteFile, siteFor(service->webPort())), write(options.portsFile, ports)})
    if (!problem.empty())
      return failWith(problem);

  const std::unique_ptr<GMainLoop, decltype(&g_main_loop_unref)> loop(g_main_loop_new(nullptr, FALSE),
                                                                      &g_main_loop_unref);
  g_unix_signal_add(SIGTERM, quit, loop.get());
  g_unix_signal_add(SIGINT, quit, loop.get());
  if (options.untilEof)
    g_unix_fd_add(STDIN_FILENO, GIOCondition(G_IO_IN | G_IO_HUP | G_IO_ERR), quitAtEof, loop.get());
  const boost::json::object ready{{"web", fmt::format("http://localhost:{}/", service->webPort())},
                                  {"control", fmt::format("http://localhost:{}/", service->controlPort())},
                                  {"siteFile", options.siteFile ? options.siteFile.get() : ""}};
  fmt::print("{}\n", base::jsonText(ready));
  std::fflush(stdout);
  g_main_loop_run(loop.get());
  return 0;
}
