// What a screen reader finds of the program, over the accessibility bus.
#include "UserHandsTest.h"
#include "platform/linux/glib/Ref.h"
#include "support/PseudoLocale.h"
#include "support/TestBus.h"

#include <boost/json/parse.hpp>
#include <boost/json/serialize.hpp>
#include <gio/gio.h>

#include <algorithm>
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
    if (role == "switch")
      switches[label] = {name, path};
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
    switches.clear();
    walk("org.a11y.atspi.Registry", "/org/a11y/atspi/accessible/root");
  }
  // The program with each of its windows, and what is found of it.
  void openAll(const Environment& more, std::initializer_list<const char*> windows) {
    bus.addService("org.a11y.Bus", "/usr/libexec/at-spi-bus-launcher");
    const auto session = bus.connect();
    tree = TestBus::connectTo(
        text(call(session, "org.a11y.Bus", "/org/a11y/bus", "org.a11y.Bus", "GetAddress")));
    Environment environment = {{"DBUS_SESSION_BUS_ADDRESS", bus.address()}, {"GTK_A11Y", "atspi"}};
    environment.insert(more.begin(), more.end());
    program = start({}, environment);
    ASSERT_TRUE(waitForPage(*program));
    for (const auto* action : {"new-tab", "settings", "highlights", "show-attached-files"})
      EXPECT_TRUE(
          call(session, "org.velmora.Ondrel", "/org/velmora/Ondrel", "org.freedesktop.Application",
               "ActivateAction",
               g_variant_new("(s@av@a{sv})", action, g_variant_new_array(G_VARIANT_TYPE_VARIANT, nullptr, 0),
                             g_variant_new_array(G_VARIANT_TYPE("{sv}"), nullptr, 0))));
    EXPECT_TRUE(eventually([&] {
      look();
      return std::ranges::all_of(windows, [this](const char* title) { return has("window", title); });
    }));
  }
  bool has(const char* role, const char* name) const { return found.contains({role, name}); }

  TestBus bus;
  std::unique_ptr<Process> program;
  glib::Ref<GDBusConnection> tree; // the accessibility bus
  std::map<std::pair<std::string, std::string>, int> found;
  std::map<std::string, std::pair<std::string, std::string>> switches; // by name: whose, and where
};

TEST_F(AccessibilityTest, EveryControlHasARoleAndOneNameAndSwitchesChangeTheSettings) {
  openAll({}, {"Settings", "Highlights", "Attached Files"});

  const std::pair<const char*, const char*> expected[] = {{"button", "Back"},
                                                          {"list item", "Production"},
                                                          {"button", "Reload"},
                                                          {"button", "New Tab"},
                                                          {"button", "Main Menu"},
                                                          {"button", "Close Tab"},
                                                          {"combo box", "Fastmail Version"},
                                                          {"search box", "Search files, senders, subjects"},
                                                          {"search box", "Search Highlights"}};
  for (const auto& [role, name] : expected)
    EXPECT_TRUE(has(role, name)) << role << " " << name;
  EXPECT_TRUE(std::ranges::any_of(found, [](const auto& each) { return each.first.first == "tab"; }));
  for (const auto& [each, times] : found) {
    const auto& [role, name] = each;
    if (!std::set<std::string>{"button", "switch", "search box", "combo box", "check box", "text box",
                               "entry", "toggle button", "link", "tab", "list item"}
             .contains(role))
      continue;
    if (name == "GtkImage" && times == 1)
      continue; // the arrow in a toolkit's menu button
    const auto half = name.substr(0, name.size() / 2);
    EXPECT_FALSE(name.empty() || name.starts_with("Gtk") || name.starts_with("Adw") || name.contains('_'))
        << role << " " << name;
    EXPECT_NE(half + " " + half, name) << role << " is named twice";
  }
  EXPECT_FALSE(has("document web", "") || has("heading", "Demo Mail"))
      << "pages can be read now: say so in README";

  const auto settings = [this] {
    return read(defaultsFile()) + read(profile / "config/autostart/org.velmora.Ondrel.desktop");
  };
  // The toolkit turns only switches that are seen.
  const std::pair<const char*, std::vector<const char*>> pages[] = {
      {"general", {"Launch at Login", "Check Spelling While Typing"}},
      {"userinterface",
       {"Ondrel in the Menu Bar", "Hide when losing focus", "Even when in Compose",
        "Compose email in separate window", "Only show external links on mouseover"}},
      {"advanced", {"Automatically label highlighted threads in Ondrel"}}};
  // Again and again: the program may be replacing the file just then.
  const auto show = [this](const char* page) {
    auto stored = boost::json::parse(read(defaultsFile())).as_object();
    if (std::exchange(stored["_selectedSettingsTab"], page) != page)
      write(defaultsFile(), boost::json::serialize(stored));
  };
  for (const auto& [page, titles] : pages)
    for (const auto* title : titles) {
      const auto place = switches[title];
      EXPECT_TRUE(eventually([&] {
        show(page);
        const auto before = settings();
        call(tree, place.first, place.second, "org.a11y.atspi.Action", "DoAction", g_variant_new("(i)", 0));
        return eventually([&] { return settings() != before; }, 2s);
      })) << title;
    }
  EXPECT_EQ(quit(*program), 0);
}

TEST_F(AccessibilityTest, NoTextIsLeftInEnglish) {
  ASSERT_TRUE(support::makePseudoLocale(TRANSLATIONS_FOLDER));
  // The toolkit's own texts are in Hebrew.
  openAll({{"LC_ALL", "C.UTF-8"}, {"LANGUAGE", "pseudo:he"}},
          {"⟦Seettiings⟧", "⟦Hiighliights⟧", "⟦Attaacheed Fiilees⟧"});
  const auto isOfOthers = [](const std::string& role, const std::string& name) {
    return role == "widget" || name.starts_with("Gtk") || name.starts_with("Adw") || role == "application" ||
           role == "desktop frame" || name.ends_with("Demo Mail") ||
           name.ends_with(")"); // a language, by the system's word
  };
  for (const auto& [each, times] : found)
    EXPECT_TRUE(support::isTranslated(each.second) || isOfOthers(each.first, each.second))
        << each.first << " " << each.second;
}

} // namespace
} // namespace ondrel::e2e
