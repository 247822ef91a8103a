// What a screen reader finds of the program, over the accessibility bus.
#include "UserHandsTest.h"
#include "platform/linux/glib/Ref.h"
#include "support/TestBus.h"

#include <gio/gio.h>

#include <map>

namespace ondrel::e2e {
namespace {

using namespace std::chrono_literals;
using support::TestBus;

constexpr const char* accessible = "org.a11y.atspi.Accessible";

class AccessibilityTest : public UserHandsTest {
 protected:
  static glib::Owned<GVariant> call(const glib::Ref<GDBusConnection>& on, const std::string& name,
                                    const std::string& path, const char* interface, const char* method,
                                    GVariant* arguments = nullptr) {
    return glib::Owned<GVariant>(
        g_dbus_connection_call_sync(on.get(), name.c_str(), path.c_str(), interface, method, arguments,
                                    nullptr, G_DBUS_CALL_FLAGS_NONE, 20000, nullptr, nullptr));
  }
  // The reply's one text, which may be boxed.
  static std::string text(const glib::Owned<GVariant>& reply) {
    if (!reply)
      return {};
    glib::Owned<GVariant> value(g_variant_get_child_value(reply.get(), 0));
    if (g_variant_is_of_type(value.get(), G_VARIANT_TYPE_VARIANT))
      value.reset(g_variant_get_variant(value.get()));
    return g_variant_get_string(value.get(), nullptr);
  }
  // Each object below this one, as its role and its name; those of one kind are counted.
  void walk(const std::string& name, const std::string& path, int depth = 0) {
    const auto role = text(call(tree, name, path, accessible, "GetRoleName"));
    const auto label = text(call(tree, name, path, "org.freedesktop.DBus.Properties", "Get",
                                 g_variant_new("(ss)", accessible, "Name")));
    ++found[{role, label}];
    const auto children = call(tree, name, path, accessible, "GetChildren");
    if (!children || depth > 60)
      return;
    const glib::Owned<GVariant> list(g_variant_get_child_value(children.get(), 0));
    GVariantIter each;
    g_variant_iter_init(&each, list.get());
    const char *owner = nullptr, *object = nullptr;
    while (g_variant_iter_next(&each, "(&s&o)", &owner, &object))
      walk(owner, object, depth + 1);
  }
  void look() {
    found.clear();
    walk("org.a11y.atspi.Registry", "/org/a11y/atspi/accessible/root");
  }
  bool has(const char* role, const char* name) const { return found.contains({role, name}); }

  TestBus bus;
  glib::Ref<GDBusConnection> tree; // the accessibility bus
  std::map<std::pair<std::string, std::string>, int> found;
};

TEST_F(AccessibilityTest, EveryControlHasARoleAndOneName) {
  bus.addService("org.a11y.Bus", "/usr/libexec/at-spi-bus-launcher");
  const auto session = bus.connect();
  tree =
      TestBus::connectTo(text(call(session, "org.a11y.Bus", "/org/a11y/bus", "org.a11y.Bus", "GetAddress")));
  auto program = start({}, {{"DBUS_SESSION_BUS_ADDRESS", bus.address()}, {"GTK_A11Y", "atspi"}});
  ASSERT_TRUE(waitForPage(*program));
  for (const auto* action : {"new-tab", "settings", "highlights", "show-attached-files"})
    EXPECT_TRUE(call(
        session, "org.velmora.Ondrel", "/org/velmora/Ondrel", "org.freedesktop.Application", "ActivateAction",
        g_variant_new("(s@av@a{sv})", action, g_variant_new_array(G_VARIANT_TYPE_VARIANT, nullptr, 0),
                      g_variant_new_array(G_VARIANT_TYPE("{sv}"), nullptr, 0))));
  EXPECT_TRUE(eventually([this] {
    look();
    return has("window", "Settings") && has("window", "Highlights") && has("window", "Attached Files");
  }));

  const std::pair<const char*, const char*> expected[] = {{"button", "Back"},
                                                          {"button", "Reload"},
                                                          {"button", "New Tab"},
                                                          {"button", "Main Menu"},
                                                          {"button", "Close Tab"},
                                                          {"switch", "Hide when losing focus"},
                                                          {"switch", "Launch at Login"},
                                                          {"combo box", "Fastmail Version"},
                                                          {"search box", "Search files, senders, subjects"},
                                                          {"search box", "Search Highlights"}};
  for (const auto& [role, name] : expected)
    EXPECT_TRUE(has(role, name)) << role << " " << name;
  // Of the toolkit's own settings window, and the arrow in a toolkit's menu button.
  const std::set<std::string> ofTheToolkit = {"GtkSearchEntry", "GtkImage"};
  for (const auto& [each, times] : found) {
    const auto& [role, name] = each;
    if (!std::set<std::string>{"button", "switch", "search box", "combo box", "check box", "text box",
                               "entry", "toggle button", "link"}
             .contains(role))
      continue;
    if (ofTheToolkit.contains(name) && times == 1)
      continue;
    const auto half = name.substr(0, name.size() / 2);
    EXPECT_FALSE(name.empty() || name.starts_with("Gtk") || name.starts_with("Adw")) << role << " " << name;
    EXPECT_NE(half + " " + half, name) << role << " is named twice";
  }
  EXPECT_FALSE(has("document web", "") || has("heading", "Demo Mail"))
      << "pages can be read now: say so in README";
  EXPECT_EQ(quit(*program), 0);
}

} // namespace
} // namespace ondrel::e2e
