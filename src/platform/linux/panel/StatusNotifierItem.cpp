#include "platform/linux/panel/StatusNotifierItem.h"

#include "async/sleep.h"
#include "base/Log.h"
#include "platform/linux/panel/StatusMenu.h"

#include <fmt/format.h>
#include <unistd.h>

#include <chrono>
#include <utility>

namespace ondrel::platform::panel {

namespace {

constexpr base::Logger logger("system");

constexpr const char* watcherName = "org.kde.StatusNotifierWatcher";
constexpr const char* itemPath = "/StatusNotifierItem"; // where watchers look
constexpr const char* menuPath = "/MenuBar";
constexpr std::chrono::seconds registrationLimit{30};

// Of the desktop's icon theme.
constexpr const char* icon = "mail-read-symbolic";
constexpr const char* attentionIcon = "mail-unread-symbolic";

constexpr const char* description = R"xml(<node><interface name="org.kde.StatusNotifierItem">
  <property name="Category" type="s" access="read"/>
  <property name="Id" type="s" access="read"/>
  <property name="Title" type="s" access="read"/>
  <property name="Status" type="s" access="read"/>
  <property name="WindowId" type="i" access="read"/>
  <property name="IconName" type="s" access="read"/>
  <property name="OverlayIconName" type="s" access="read"/>
  <property name="AttentionIconName" type="s" access="read"/>
  <property name="AttentionMovieName" type="s" access="read"/>
  <property name="IconThemePath" type="s" access="read"/>
  <property name="ToolTip" type="(sa(iiay)ss)" access="read"/>
  <property name="ItemIsMenu" type="b" access="read"/>
  <property name="Menu" type="o" access="read"/>
  <property name="XAyatanaLabel" type="s" access="read"/>
  <property name="XAyatanaLabelGuide" type="s" access="read"/>
  <method name="ContextMenu"><arg type="i" direction="in"/><arg type="i" direction="in"/></method>
  <method name="Activate"><arg type="i" direction="in"/><arg type="i" direction="in"/></method>
  <method name="SecondaryActivate"><arg type="i" direction="in"/><arg type="i" direction="in"/></method>
  <method name="Scroll"><arg type="i" direction="in"/><arg type="s" direction="in"/></method>
  <method name="ProvideXdgActivationToken"><arg type="s" direction="in"/></method>
  <signal name="NewTitle"/>
  <signal name="NewIcon"/>
  <signal name="NewAttentionIcon"/>
  <signal name="NewOverlayIcon"/>
  <signal name="NewToolTip"/>
  <signal name="NewStatus"><arg type="s"/></signal>
  <signal name="XAyatanaNewLabel"><arg type="s"/><arg type="s"/></signal>
</interface></node>)xml";

const char* statusOf(const StatusItem::Face& face) {
  return face.attention ? "NeedsAttention" : "Active";
}

glib::Ref<GDBusMessage> registration(const std::string& watcher, const std::string& name) {
  auto call = glib::adopt(g_dbus_message_new_method_call(watcher.c_str(), "/StatusNotifierWatcher",
                                                         watcherName, "RegisterStatusNotifierItem"));
  g_dbus_message_set_body(call.get(), g_variant_new("(s)", name.c_str()));
  return call;
}

} // namespace

StatusNotifierItem::StatusNotifierItem(Options options, desktop::BusConnector bus)
    : options_(std::move(options)) {
  scope_.spawn(connect(std::move(bus)));
}

StatusNotifierItem::~StatusNotifierItem() = default;

async::Task<void> StatusNotifierItem::connect(desktop::BusConnector bus) {
  connection_ = co_await bus();
  if (connection_ && inserted_)
    insert();
}

void StatusNotifierItem::setInserted(bool inserted) {
  if (std::exchange(inserted_, inserted) == inserted || !connection_)
    return;
  if (inserted)
    insert();
  else
    remove();
}

void StatusNotifierItem::insert() {
  menu_ = std::make_unique<StatusMenu>(menuPath, [this] {
    if (options_.menuOpens)
      options_.menuOpens();
  });
  menu_->setRows(rows_);
  object_ = desktop::BusObject(
      connection_, itemPath, description,
      {[this](const std::string& method, GVariant* arguments) { called(method, arguments); },
       [this](const std::string& name) { return property(name); }});
  // The watcher knows that an item has gone by its name. Where a sandbox gives no name, that of the
  // connection serves: the item then stays in the panel until the program ends.
  const auto name = fmt::format("org.kde.StatusNotifierItem-{}-{}", getpid(), ++insertions_);
  name_ = desktop::OwnedBusName(connection_, name.c_str(), [this, name](bool owned) {
    watch(owned ? name : g_dbus_connection_get_unique_name(connection_.get()));
  });
}

void StatusNotifierItem::remove() {
  registration_.cancel();
  watcher_ = {};
  name_ = {};
  object_ = {};
  menu_.reset();
  isShown.set(false);
}

void StatusNotifierItem::watch(const std::string& name) {
  watcher_ = desktop::BusNameWatch(connection_, watcherName, [this, name](const std::string& owner) {
    registration_.cancel();
    isShown.set(false);
    if (!owner.empty())
      registration_ = scope_.spawn(registerWith(owner, name));
  });
}

async::Task<void> StatusNotifierItem::registerWith(std::string watcher, std::string name) {
  const auto answer = co_await desktop::callBus(connection_, registration(watcher, name), registrationLimit);
  const bool cancelled = co_await async::cancelled();
  if (cancelled)
    co_return;
  if (answer && !desktop::isError(*answer))
    isShown.set(true);
  else
    logger.error("The panel doesn't take the icon: {}",
                 answer ? desktop::errorText(*answer) : answer.error());
}

void StatusNotifierItem::called(const std::string& method, GVariant* arguments) {
  if (method == "Activate" || method == "SecondaryActivate") {
    activated.emit();
  } else if (method == "ProvideXdgActivationToken" && options_.useActivationToken) {
    const char* token = nullptr;
    g_variant_get(arguments, "(&s)", &token);
    options_.useActivationToken(token);
  }
}

void StatusNotifierItem::setMenu(std::vector<Row> rows) {
  rows_ = std::move(rows);
  if (menu_)
    menu_->setRows(rows_);
}

void StatusNotifierItem::setFace(Face face) {
  const auto before = std::exchange(face_, std::move(face));
  if (before.title != face_.title)
    object_.emitSignal("NewTitle");
  if (before.toolTip != face_.toolTip)
    object_.emitSignal("NewToolTip");
  if (before.attention != face_.attention) {
    object_.emitSignal("NewIcon");
    object_.emitSignal("NewStatus", g_variant_new("(s)", statusOf(face_)));
  }
  if (before.label != face_.label)
    object_.emitSignal("XAyatanaNewLabel", g_variant_new("(ss)", face_.label.c_str(), face_.label.c_str()));
}

GVariant* StatusNotifierItem::property(const std::string& name) const {
  if (name == "Category")
    return g_variant_new_string("Communications");
  if (name == "Id")
    return g_variant_new_string(options_.applicationId.c_str());
  if (name == "Title")
    return g_variant_new_string(face_.title.c_str());
  if (name == "Status")
    return g_variant_new_string(statusOf(face_));
  if (name == "WindowId")
    return g_variant_new_int32(0);
  if (name == "IconName")
    return g_variant_new_string(face_.attention ? attentionIcon : icon);
  if (name == "AttentionIconName")
    return g_variant_new_string(attentionIcon);
  if (name == "ToolTip")
    return g_variant_new("(s@a(iiay)ss)", "", g_variant_new_array(G_VARIANT_TYPE("(iiay)"), nullptr, 0),
                         options_.applicationName.c_str(), face_.toolTip.c_str());
  if (name == "ItemIsMenu")
    return g_variant_new_boolean(FALSE);
  if (name == "Menu")
    return g_variant_new_object_path(menuPath);
  if (name.starts_with("XAyatanaLabel"))
    return g_variant_new_string(face_.label.c_str());
  return g_variant_new_string(""); // no overlay, no film, no icons of our own
}

} // namespace ondrel::platform::panel
