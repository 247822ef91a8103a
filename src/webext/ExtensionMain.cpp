#include "platform/linux/webkit/WebKitMessages.h"
#include "webext/PageBridge.h"

namespace ondrel::webext {

namespace {

BridgeSettings settingsFrom(WebKitWebProcessExtension* extension, const GVariant* data) {
  BridgeSettings settings;
  settings.extension = extension;
  auto* variant = const_cast<GVariant*>(data);
  if (!variant || !g_variant_is_of_type(variant, G_VARIANT_TYPE(platform::webkit::initializationFormat)))
    return settings;
  guint64 largestBody = 0;
  GVariantIter* names = nullptr;
  g_variant_get(variant, platform::webkit::initializationFormat, &largestBody, &names);
  settings.largestBody = largestBody;
  const char* name = nullptr;
  while (g_variant_iter_next(names, "&s", &name))
    settings.handlerNames.emplace_back(name);
  g_variant_iter_free(names);
  return settings;
}

struct Extension {
  Extension(WebKitWebProcessExtension* extension, BridgeSettings settings)
      : settings_(std::make_shared<const BridgeSettings>(std::move(settings))),
        pageCreated_(glib::connect<void(WebKitWebProcessExtension*, WebKitWebPage*)>(
            extension, "page-created",
            [this](WebKitWebProcessExtension*, WebKitWebPage* page) {
              PageBridge::attach(page, settings_);
            })),
        documentBegan_(glib::connect<void(WebKitScriptWorld*, WebKitWebPage*, WebKitFrame*)>(
            webkit_script_world_get_default(), "window-object-cleared",
            [](WebKitScriptWorld*, WebKitWebPage* page, WebKitFrame* frame) {
              if (auto* bridge = PageBridge::of(page))
                bridge->documentBegan(frame);
            })) {}

 private:
  std::shared_ptr<const BridgeSettings> settings_;
  glib::Connection pageCreated_;
  glib::Connection documentBegan_;
};

} // namespace

} // namespace ondrel::webext

extern "C" G_MODULE_EXPORT void
webkit_web_process_extension_initialize_with_user_data(WebKitWebProcessExtension* extension,
                                                       const GVariant* userData) {
  // Stays until the process ends; so does the library.
  new ondrel::webext::Extension(extension, ondrel::webext::settingsFrom(extension, userData));
}
