#include "platform/linux/desktop/LinuxUriLauncher.h"

#include "base/Log.h"
#include "base/Text.h"
#include "base/Url.h"
#include "platform/linux/desktop/Rendering.h"
#include "platform/linux/glib/Ref.h"

#include <gtk/gtk.h>

#include <algorithm>
#include <array>
#include <string_view>

namespace ondrel::platform::desktop {

namespace {

constexpr base::Logger logger("system");

// Types that do something when they are opened, those of other systems' programs and links among them: what
// runs these here may be installed.
constexpr std::array<std::string_view, 13> programTypes = {"application/x-desktop",
                                                           "application/x-executable",
                                                           "application/x-sharedlib",
                                                           "application/vnd.appimage",
                                                           "application/x-shellscript",
                                                           "application/x-java-archive",
                                                           "application/x-java-jnlp-file",
                                                           "application/x-msdownload",
                                                           "application/x-ms-dos-executable",
                                                           "application/vnd.microsoft.portable-executable",
                                                           "application/x-msi",
                                                           "application/x-ms-shortcut",
                                                           "application/x-mswinurl"};

bool isProgram(GFile* file) {
  const auto info = glib::adopt(g_file_query_info(file,
                                                  G_FILE_ATTRIBUTE_STANDARD_CONTENT_TYPE
                                                  "," G_FILE_ATTRIBUTE_STANDARD_TYPE
                                                  "," G_FILE_ATTRIBUTE_ACCESS_CAN_EXECUTE,
                                                  G_FILE_QUERY_INFO_NONE, nullptr, nullptr));
  if (!info || g_file_info_get_file_type(info.get()) == G_FILE_TYPE_DIRECTORY)
    return false;
  if (g_file_info_get_attribute_boolean(info.get(), G_FILE_ATTRIBUTE_ACCESS_CAN_EXECUTE))
    return true;
  const char* type = g_file_info_get_content_type(info.get());
  return type && std::ranges::any_of(programTypes, [type](std::string_view program) {
           return g_content_type_is_a(type, std::string(program).c_str()) != FALSE;
         });
}

// What really is to be opened for that URL.
std::string target(const std::string& url, const std::string& scheme) {
  if (scheme != "file")
    return url;
  const auto file = glib::adopt(g_file_new_for_uri(url.c_str()));
  if (!isProgram(file.get()))
    return url;
  const auto folder = glib::adopt(g_file_get_parent(file.get()));
  return folder ? glib::CString(g_file_get_uri(folder.get())).get() : url;
}

void launched(GObject*, GAsyncResult* result, gpointer) {
  glib::Error error;
  if (!g_app_info_launch_default_for_uri_finish(result, error.out()))
    logger.error("The desktop can't open a link: {}", error.message());
}

} // namespace

void LinuxUriLauncher::open(const std::string& url) {
  const auto parsed = url.starts_with('-') ? std::nullopt : base::Url::parse(url);
  if (!parsed || !parsed->scheme()) {
    logger.error("Refused to open what is no absolute URL: {}", base::Private{base::displayLine(url)});
    return;
  }
  const auto scheme = base::lowercasedAscii(*parsed->scheme());
  auto* display = gdk_display_get_default();
  const auto context = glib::adopt(display ? G_APP_LAUNCH_CONTEXT(gdk_display_get_app_launch_context(display))
                                           : g_app_launch_context_new());
  for (const auto& variable : renderingVariables())
    g_app_launch_context_unsetenv(context.get(), variable.c_str());
  // Nobody waits for it: the callback only logs.
  g_app_info_launch_default_for_uri_async(target(url, scheme).c_str(), context.get(), nullptr, launched,
                                          nullptr);
}

std::optional<std::string> LinuxUriLauncher::defaultApplicationForScheme(const std::string& scheme) const {
  const auto application = glib::adopt(g_app_info_get_default_for_uri_scheme(scheme.c_str()));
  const char* id = application ? g_app_info_get_id(application.get()) : nullptr;
  if (!id)
    return std::nullopt;
  std::string_view name = id;
  if (name.ends_with(".desktop"))
    name.remove_suffix(std::string_view(".desktop").size());
  return std::string(name);
}

} // namespace ondrel::platform::desktop
