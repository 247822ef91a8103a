#include "platform/linux/webkit/WebKitEngine.h"

#include "base/Log.h"
#include "platform/ScriptMessage.h"
#include "platform/linux/files/UniqueFd.h"
#include "platform/linux/webkit/WebKitMessages.h"
#include "platform/linux/webkit/WebKitSandbox.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace ondrel::platform::webkit {

namespace {

using glib::adopt;
using glib::Ref;

constexpr base::Logger logger("system");
constexpr mode_t folderMode = 0700;
constexpr mode_t fileMode = 0600;

// Whether the folder is there, ours alone, and can be written.
bool makePrivateFolder(const std::string& path) {
  const bool usable = g_mkdir_with_parents(path.c_str(), folderMode) == 0 &&
                      chmod(path.c_str(), folderMode) == 0 && access(path.c_str(), W_OK | X_OK) == 0;
  if (!usable)
    logger.error("Cookies and the pages' data hold until exit only, {} can't be used: {}", path,
                 g_strerror(errno));
  return usable;
}

// Made before the engine does, which would make it readable for everybody.
void makePrivateFile(const std::string& path) {
  const files::UniqueFd file(open(path.c_str(), O_CREAT | O_RDWR | O_CLOEXEC | O_NOFOLLOW, fileMode));
  if (!file || fchmod(file.get(), fileMode) != 0)
    logger.error("Can't make the file {}: {}", path, g_strerror(errno));
}

Ref<WebKitNetworkSession> makeSession(const WebKitOptions& options) {
  // The engine starts no web process at all when a folder is missing that it wants to show to it.
  if (options.ephemeral || !makePrivateFolder(options.dataFolder) || !makePrivateFolder(options.cacheFolder))
    return adopt(webkit_network_session_new_ephemeral());
  auto session = adopt(webkit_network_session_new(options.dataFolder.c_str(), options.cacheFolder.c_str()));
  const auto cookies = options.dataFolder + "/cookies.sqlite";
  makePrivateFile(cookies);
  webkit_cookie_manager_set_persistent_storage(webkit_network_session_get_cookie_manager(session.get()),
                                               cookies.c_str(), WEBKIT_COOKIE_PERSISTENT_STORAGE_SQLITE);
  return session;
}

GVariant* initializationData(const WebKitOptions& options) {
  GVariantBuilder names;
  g_variant_builder_init(&names, G_VARIANT_TYPE("as"));
  for (const auto& name : options.handlerNames)
    g_variant_builder_add(&names, "s", name.c_str());
  return g_variant_new(webkit::initializationFormat, guint64{ScriptMessage::largestBody}, &names);
}

// The engine frees what it can from half of the limit on, and ends a process at one and a half times the
// limit: it looks from time to time, and gives a page the time to shrink.
std::unique_ptr<WebKitMemoryPressureSettings, decltype(&webkit_memory_pressure_settings_free)>
memorySettings(unsigned limit) {
  constexpr double killThreshold = 1.5;
  constexpr double secondsBetweenLooks = 5;
  auto* settings = webkit_memory_pressure_settings_new();
  webkit_memory_pressure_settings_set_memory_limit(settings, limit);
  webkit_memory_pressure_settings_set_kill_threshold(settings, killThreshold);
  webkit_memory_pressure_settings_set_poll_interval(settings, secondsBetweenLooks);
  return {settings, webkit_memory_pressure_settings_free};
}

Ref<WebKitWebContext> makeContext(const WebKitOptions& options) {
  const auto memory = memorySettings(options.pageMemoryLimit);
  auto context = adopt(WEBKIT_WEB_CONTEXT(
      g_object_new(WEBKIT_TYPE_WEB_CONTEXT, "memory-pressure-settings", memory.get(), nullptr)));
  webkit_web_context_add_path_to_sandbox(context.get(), options.extensionFolder.c_str(), TRUE);
  webkit_web_context_set_web_process_extensions_directory(context.get(), options.extensionFolder.c_str());
  webkit_web_context_set_web_process_extensions_initialization_user_data(context.get(),
                                                                         initializationData(options));
  return context;
}

Ref<WebKitUserContentManager> contentManager(const WebKitEngine::Scripts& scripts) {
  auto manager = adopt(webkit_user_content_manager_new());
  for (const auto& script : scripts) {
    auto* raw = webkit_user_script_new(
        script->source.c_str(),
        script->mainFrameOnly ? WEBKIT_USER_CONTENT_INJECT_TOP_FRAME : WEBKIT_USER_CONTENT_INJECT_ALL_FRAMES,
        script->time == InjectionTime::documentStart ? WEBKIT_USER_SCRIPT_INJECT_AT_DOCUMENT_START
                                                     : WEBKIT_USER_SCRIPT_INJECT_AT_DOCUMENT_END,
        nullptr, nullptr);
    webkit_user_content_manager_add_script(manager.get(), raw);
    webkit_user_script_unref(raw);
  }
  return manager;
}

} // namespace

WebKitEngine::WebKitEngine(const WebKitOptions& options, DownloadHandler downloads)
    : softwareRendering_(options.softwareRendering) {
  ensureSandboxOrFallBack();
  context_ = makeContext(options);
  session_ = makeSession(options);
  downloadStarted_ = glib::connect<void(WebKitNetworkSession*, WebKitDownload*)>(
      session_.get(), "download-started",
      [take = std::move(downloads)](WebKitNetworkSession*, WebKitDownload* download) { take(download); });
}

Ref<WebKitSettings> WebKitEngine::makeSettings() const {
  auto settings = adopt(webkit_settings_new());
  webkit_settings_set_enable_developer_extras(settings.get(), FALSE);
  // The engine forgets a click after a second, and would refuse the windows of a page that asked its server
  // first without a word. So it always asks, and the answer is ours (NewWindowRequest::followsUser).
  webkit_settings_set_javascript_can_open_windows_automatically(settings.get(), TRUE);
  webkit_settings_set_enable_media_stream(settings.get(), FALSE);
  if (softwareRendering_)
    webkit_settings_set_hardware_acceleration_policy(settings.get(),
                                                     WEBKIT_HARDWARE_ACCELERATION_POLICY_NEVER);
  return settings;
}

Ref<WebKitWebView> WebKitEngine::makeView(const Scripts& scripts) const {
  return glib::share(WEBKIT_WEB_VIEW(g_object_new(
      WEBKIT_TYPE_WEB_VIEW, "web-context", context_.get(), "network-session", session_.get(),
      "user-content-manager", contentManager(scripts).get(), "settings", makeSettings().get(), nullptr)));
}

Ref<WebKitWebView> WebKitEngine::makeDocumentView() const {
  constexpr const char* policy =
      "default-src 'none'; style-src 'unsafe-inline'; img-src data:; form-action 'none'";
  const auto settings = makeSettings();
  // Scripting is on for the program's own evaluations; of the page none gets past the parser, nor past the
  // policy.
  webkit_settings_set_enable_javascript_markup(settings.get(), FALSE);
  return glib::share(WEBKIT_WEB_VIEW(
      g_object_new(WEBKIT_TYPE_WEB_VIEW, "web-context", context_.get(), "network-session", session_.get(),
                   "settings", settings.get(), "default-content-security-policy", policy, nullptr)));
}

Ref<WebKitWebView> WebKitEngine::makePopup(WebKitWebView* opener) const {
  return glib::share(WEBKIT_WEB_VIEW(
      g_object_new(WEBKIT_TYPE_WEB_VIEW, "related-view", opener, "settings", makeSettings().get(), nullptr)));
}

} // namespace ondrel::platform::webkit
