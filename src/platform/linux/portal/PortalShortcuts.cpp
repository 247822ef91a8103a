#include "platform/linux/portal/PortalShortcuts.h"

#include "base/Log.h"
#include "base/Text.h"
#include "base/Translation.h"
#include "platform/linux/portal/PortalRequest.h"
#include "platform/linux/text/SafeText.h"

#include <utility>

namespace ondrel::platform::portal {

namespace {

constexpr base::Logger logger("system");
constexpr const char* interface = "org.freedesktop.portal.GlobalShortcuts";
constexpr const char* noParent = "";
constexpr std::size_t longestDescription = 60; // characters

GVariant* entry(const char* key, const std::string& text) {
  return g_variant_new("{sv}", key, g_variant_new_string(text.c_str()));
}

// The keys of the first shortcut in the desktop's own words; empty where it has none.
std::string triggerDescription(GVariant* results) {
  const glib::Owned<GVariant> list(g_variant_lookup_value(results, "shortcuts", G_VARIANT_TYPE("a(sa{sv})")));
  if (!list || g_variant_n_children(list.get()) == 0)
    return "";
  const char* id = nullptr;
  GVariant* properties = nullptr;
  g_variant_get_child(list.get(), 0, "(&s@a{sv})", &id, &properties);
  const glib::Owned<GVariant> owned(properties);
  const char* text = nullptr;
  if (!g_variant_lookup(properties, "trigger_description", "&s", &text))
    return "";
  return text::boundedUtf8(base::displayLine(text), longestDescription);
}

std::string sentence(const std::string& problem) {
  if (problem == "cancelled")
    return base::tr("The desktop has not given these keys.");
  logger.error("The portal gives no global shortcut: {}", problem);
  return base::tr(
      "The desktop doesn't give these keys. Its own keyboard settings can run \"ondrel --toggle\" "
      "instead.");
}

} // namespace

PortalShortcuts::PortalShortcuts(Options options, desktop::BusConnector bus) : options_(std::move(options)) {
  scope_.spawn(connect(std::move(bus)));
}

PortalShortcuts::~PortalShortcuts() {
  for (const auto& [name, session] : sessions_)
    close(session);
}

async::Task<void> PortalShortcuts::connect(desktop::BusConnector bus) {
  connection_ = co_await bus();
  if (!connection_)
    co_return;
  nameWatch_ = desktop::BusNameWatch(connection_, portalName,
                                     [this](const std::string& owner) { portalChanged(owner); });
  activations_ = desktop::BusSubscription(connection_, interface, "Activated", portalPath,
                                          [this](const std::string& sender, const std::string&,
                                                 GVariant* arguments) { activated(sender, arguments); });
  co_await askVersion(""); // which starts a portal that the bus knows
}

// A new portal knows nothing of the sessions of the one before.
void PortalShortcuts::portalChanged(const std::string& owner) {
  if (owner == portal_)
    return;
  portal_ = owner;
  sessions_.clear();
  isAvailable_.set(false);
  if (!owner.empty())
    scope_.spawn(askVersion(owner));
}

async::Task<void> PortalShortcuts::askVersion(std::string owner) {
  const auto version = co_await portalVersion(connection_, interface);
  if (owner == portal_)
    isAvailable_.set(version > 0);
}

async::Task<std::expected<std::string, std::string>> PortalShortcuts::reserve(std::string name,
                                                                              KeyCombination keys) {
  if (!connection_)
    co_return std::unexpected(sentence("there is no session bus"));
  const auto created =
      co_await requestFromPortal(connection_, interface, "CreateSession", [](const std::string& token) {
        GVariantBuilder options;
        g_variant_builder_init(&options, G_VARIANT_TYPE_VARDICT);
        g_variant_builder_add_value(&options, entry("handle_token", token));
        g_variant_builder_add_value(&options, entry("session_handle_token", newToken()));
        return g_variant_new("(@a{sv})", g_variant_builder_end(&options));
      });
  if (!created)
    co_return std::unexpected(sentence(created.error()));
  const char* handle = nullptr;
  if (!g_variant_lookup(created->get(), "session_handle", "&s", &handle) || !g_variant_is_object_path(handle))
    co_return std::unexpected(sentence("a session without a handle"));
  const std::string session = handle;
  auto bound = co_await bind(session, name, std::move(keys));
  if (!bound) {
    close(session);
    co_return std::unexpected(std::move(bound.error()));
  }
  release(name);
  sessions_[name] = session;
  co_return std::move(*bound);
}

async::Task<std::expected<std::string, std::string>>
PortalShortcuts::bind(std::string session, std::string name, KeyCombination keys) {
  const auto answer = co_await requestFromPortal(
      connection_, interface, "BindShortcuts",
      [this, session, name, trigger = options_.triggerText(keys)](const std::string& token) {
        GVariantBuilder shortcut;
        g_variant_builder_init(&shortcut, G_VARIANT_TYPE_VARDICT);
        g_variant_builder_add_value(&shortcut, entry("description", options_.description));
        g_variant_builder_add_value(&shortcut, entry("preferred_trigger", trigger));
        GVariantBuilder list;
        g_variant_builder_init(&list, G_VARIANT_TYPE("a(sa{sv})"));
        g_variant_builder_add(&list, "(s@a{sv})", name.c_str(), g_variant_builder_end(&shortcut));
        GVariantBuilder options;
        g_variant_builder_init(&options, G_VARIANT_TYPE_VARDICT);
        g_variant_builder_add_value(&options, entry("handle_token", token));
        return g_variant_new("(o@a(sa{sv})s@a{sv})", session.c_str(), g_variant_builder_end(&list), noParent,
                             g_variant_builder_end(&options));
      });
  if (!answer)
    co_return std::unexpected(sentence(answer.error()));
  co_return triggerDescription(answer->get());
}

void PortalShortcuts::release(const std::string& name) {
  if (const auto found = sessions_.extract(name))
    close(found.mapped());
}

void PortalShortcuts::close(const std::string& session) const {
  g_dbus_connection_call(connection_.get(), portalName, session.c_str(), "org.freedesktop.portal.Session",
                         "Close", nullptr, nullptr, G_DBUS_CALL_FLAGS_NO_AUTO_START, -1, nullptr, nullptr,
                         nullptr);
}

void PortalShortcuts::activated(const std::string& sender, GVariant* arguments) {
  if (sender != portal_ || !g_variant_is_of_type(arguments, G_VARIANT_TYPE("(osta{sv})")))
    return;
  const char* session = nullptr;
  const char* name = nullptr;
  GVariant* properties = nullptr;
  g_variant_get(arguments, "(&o&st@a{sv})", &session, &name, nullptr, &properties);
  const glib::Owned<GVariant> owned(properties);
  const auto found = sessions_.find(name);
  if (found == sessions_.end() || found->second != session)
    return;
  const char* token = nullptr;
  if (options_.useActivationToken && g_variant_lookup(properties, "activation_token", "&s", &token))
    options_.useActivationToken(token);
  performed.emit(name);
}

} // namespace ondrel::platform::portal
