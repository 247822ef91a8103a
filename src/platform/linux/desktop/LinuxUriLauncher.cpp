#include "platform/linux/desktop/LinuxUriLauncher.h"

#include "base/Log.h"
#include "base/Text.h"
#include "base/Translation.h"
#include "base/Url.h"
#include "platform/linux/desktop/ApplicationChoice.h"
#include "platform/linux/desktop/MessageBus.h"
#include "platform/linux/desktop/Rendering.h"
#include "platform/linux/glib/AsyncResult.h"
#include "platform/linux/glib/Ref.h"
#include "platform/linux/text/SafeText.h"

#include <gtk/gtk.h>

#include <algorithm>
#include <array>
#include <chrono>
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

constexpr const char* programAttributes = G_FILE_ATTRIBUTE_STANDARD_CONTENT_TYPE
    "," G_FILE_ATTRIBUTE_STANDARD_TYPE "," G_FILE_ATTRIBUTE_ACCESS_CAN_EXECUTE;

bool isProgram(GFileInfo* info) {
  if (g_file_info_get_file_type(info) == G_FILE_TYPE_DIRECTORY)
    return false;
  if (g_file_info_get_attribute_boolean(info, G_FILE_ATTRIBUTE_ACCESS_CAN_EXECUTE))
    return true;
  const char* type = g_file_info_get_content_type(info);
  return type && std::ranges::any_of(programTypes, [type](std::string_view program) {
           return g_content_type_is_a(type, std::string(program).c_str()) != FALSE;
         });
}

std::string folderOf(GFile* file) {
  const auto folder = glib::adopt(g_file_get_parent(file));
  return glib::CString(g_file_get_uri(folder ? folder.get() : file)).get();
}

// What really is to be opened for that URL.
std::string target(const std::string& url, const std::string& scheme) {
  if (scheme != "file")
    return url;
  const auto file = glib::adopt(g_file_new_for_uri(url.c_str()));
  const auto info =
      glib::adopt(g_file_query_info(file.get(), programAttributes, G_FILE_QUERY_INFO_NONE, nullptr, nullptr));
  return info && isProgram(info.get()) ? folderOf(file.get()) : url;
}

glib::Ref<GAppLaunchContext> launchContext() {
  auto* display = gdk_display_get_default();
  auto context = glib::adopt(display ? G_APP_LAUNCH_CONTEXT(gdk_display_get_app_launch_context(display))
                                     : g_app_launch_context_new());
  for (const auto& variable : renderingVariables())
    g_app_launch_context_unsetenv(context.get(), variable.c_str());
  return context;
}

using Result = std::expected<void, std::string>;

async::Task<Result> launch(std::string uri) {
  const auto context = launchContext();
  auto [pending, result] = glib::startAsync();
  g_app_info_launch_default_for_uri_async(uri.c_str(), context.get(), pending.cancellable,
                                          glib::PendingCall::callback, pending.userData);
  const auto finished = co_await std::move(result);
  glib::Error error;
  if (finished && !g_app_info_launch_default_for_uri_finish(finished->get(), error.out()))
    co_return std::unexpected(error.matches(G_IO_ERROR, G_IO_ERROR_NOT_SUPPORTED)
                                  ? base::tr("There is no application for it on this computer.")
                                  : text::validUtf8(error.message()));
  co_return {};
}

async::Task<std::expected<glib::Ref<GFileInfo>, std::string>> lookAt(glib::Ref<GFile> file) {
  auto [pending, result] = glib::startAsync();
  g_file_query_info_async(file.get(), programAttributes, G_FILE_QUERY_INFO_NONE, G_PRIORITY_DEFAULT,
                          pending.cancellable, glib::PendingCall::callback, pending.userData);
  const auto finished = co_await std::move(result);
  if (!finished)
    co_return std::unexpected("");
  glib::Error error;
  auto info = glib::adopt(g_file_query_info_finish(file.get(), finished->get(), error.out()));
  if (!info)
    co_return std::unexpected(error.matches(G_IO_ERROR, G_IO_ERROR_NOT_FOUND)
                                  ? base::tr("The file is not there any more.")
                                  : text::validUtf8(error.message()));
  co_return std::move(info);
}

// By the file manager; false where none has understood.
async::Task<bool> select(std::string uri) {
  constexpr std::chrono::seconds limit{10}; // it may have to be started
  const auto connection = co_await sessionBus();
  if (!connection)
    co_return false;
  auto call = glib::adopt(g_dbus_message_new_method_call("org.freedesktop.FileManager1",
                                                         "/org/freedesktop/FileManager1",
                                                         "org.freedesktop.FileManager1", "ShowItems"));
  const char* const uris[] = {uri.c_str(), nullptr};
  g_dbus_message_set_body(call.get(), g_variant_new("(^ass)", uris, ""));
  const auto reply = co_await callBus(connection, std::move(call), limit);
  co_return reply && !isError(*reply);
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
  const auto context = launchContext();
  // Nobody waits for it: the callback only logs.
  g_app_info_launch_default_for_uri_async(target(url, scheme).c_str(), context.get(), nullptr, launched,
                                          nullptr);
}

async::Task<Result> LinuxUriLauncher::openFile(std::string path) {
  const auto file = glib::adopt(g_file_new_for_path(path.c_str()));
  const auto info = co_await lookAt(file);
  if (!info)
    co_return std::unexpected(info.error());
  if (isProgram(info->get()))
    co_return co_await showFile(std::move(path));
  co_return co_await launch(glib::CString(g_file_get_uri(file.get())).get());
}

async::Task<Result> LinuxUriLauncher::openFileWith(std::string path, NativeView parent) {
  auto* root = parent.handle ? gtk_widget_get_root(static_cast<GtkWidget*>(parent.handle)) : nullptr;
  const auto window = glib::share(GTK_IS_WINDOW(root) ? GTK_WINDOW(root) : nullptr);
  const auto file = glib::adopt(g_file_new_for_path(path.c_str()));
  const auto info = co_await lookAt(file);
  if (!info)
    co_return std::unexpected(info.error());
  if (isProgram(info->get()))
    co_return co_await showFile(std::move(path));
  const auto application = co_await chooseApplication(window, file);
  if (!application)
    co_return {};
  const auto context = launchContext();
  GList files{file.get(), nullptr, nullptr};
  glib::Error error;
  if (!g_app_info_launch(application.get(), &files, context.get(), error.out()))
    co_return std::unexpected(text::validUtf8(error.message()));
  co_return {};
}

async::Task<Result> LinuxUriLauncher::showFile(std::string path) {
  const auto file = glib::adopt(g_file_new_for_path(path.c_str()));
  const auto info = co_await lookAt(file);
  if (!info)
    co_return std::unexpected(info.error());
  const bool isSelected = co_await select(glib::CString(g_file_get_uri(file.get())).get());
  if (isSelected)
    co_return {};
  co_return co_await launch(folderOf(file.get()));
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
