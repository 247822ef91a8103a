#include "platform/linux/desktop/LauncherEntry.h"

#include "base/Text.h"

namespace ondrel::platform::desktop {

LauncherEntry::LauncherEntry(std::string applicationId, BusConnector bus)
    : applicationId_(std::move(applicationId)) {
  scope_.spawn(connect(std::move(bus)));
}

async::Task<void> LauncherEntry::connect(BusConnector bus) {
  connection_ = co_await bus();
  if (!connection_)
    co_return;
  if (count_)
    update();
  // Owned by the launchers that listen, for as long as they run: one that starts later knows nothing yet.
  launcherWatch_ = BusNameWatch(connection_, "com.canonical.Unity", [this](const std::string& owner) {
    if (!owner.empty() && count_)
      update();
  });
}

void LauncherEntry::setLabel(const std::optional<std::string>& label) {
  const auto count = label ? base::parsedInteger(*label) : std::nullopt;
  if (count == count_)
    return;
  count_ = count;
  if (connection_)
    update();
}

void LauncherEntry::update() const {
  GVariantBuilder properties;
  g_variant_builder_init(&properties, G_VARIANT_TYPE_VARDICT);
  g_variant_builder_add(&properties, "{sv}", "count", g_variant_new_int64(count_.value_or(0)));
  g_variant_builder_add(&properties, "{sv}", "count-visible", g_variant_new_boolean(count_.has_value()));
  const auto uri = "application://" + applicationId_ + ".desktop";
  g_dbus_connection_emit_signal(connection_.get(), nullptr, "/com/canonical/unity/launcherentry",
                                "com.canonical.Unity.LauncherEntry", "Update",
                                g_variant_new("(sa{sv})", uri.c_str(), &properties), nullptr);
}

} // namespace ondrel::platform::desktop
