#include "platform/linux/panel/StatusNotifierItem.h"
#include "BusTest.h"
#include "StatusWatcher.h"

#include <optional>

namespace ondrel::platform {

namespace {

class StatusNotifierItemTest : public BusTest {
 protected:
  StatusNotifierItemTest() {
    item.setMenu({{"Hide_It", [this] { log += "hide "; }}, {"Settings", [this] { log += "settings "; }}});
    item.setFace({.attention = false, .title = "Ondrel", .toolTip = "No unread mail", .label = ""});
    activated = item.activated.subscribe([this] { log += "activated "; });
  }
  bool comes() {
    return until([this] { return *item.isShown; });
  }
  std::string ask(const char* path, const char* interface, const char* method, GVariant* arguments) {
    std::string answer;
    watcher->send(path, interface, method, arguments, [&](std::string text) { answer = std::move(text); });
    until([&] { return !answer.empty(); });
    return answer;
  }
  std::string property(const char* name) {
    return ask("/StatusNotifierItem", "org.freedesktop.DBus.Properties", "Get",
               g_variant_new("(ss)", "org.kde.StatusNotifierItem", name));
  }
  std::string layout() {
    return ask("/MenuBar", "com.canonical.dbusmenu", "GetLayout", g_variant_new("(iias)", 0, -1, nullptr));
  }

  std::string log;
  panel::StatusNotifierItem item{
      {.applicationId = "org.velmora.Ondrel",
       .applicationName = "Ondrel",
       .useActivationToken = [this](const std::string& token) { log += token + " "; }}};
  std::optional<support::StatusWatcher> watcher;
  base::Subscription activated;
};

TEST_F(StatusNotifierItemTest, ComesAndGoesWithTheWatcherAndTheSetting) {
  item.setInserted(true);
  turn();
  EXPECT_FALSE(*item.isShown) << "nobody has a place for it";
  watcher.emplace();
  ASSERT_TRUE(comes());
  const auto first = watcher->item();
  EXPECT_TRUE(first.starts_with("org.kde.StatusNotifierItem-"));

  watcher.reset(); // the panel crashes and comes back
  ASSERT_TRUE(until([this] { return !*item.isShown; }));
  watcher.emplace();
  ASSERT_TRUE(comes());
  EXPECT_EQ(watcher->item(), first);

  item.setInserted(false);
  EXPECT_FALSE(*item.isShown);
  EXPECT_TRUE(until([this] { return watcher->item().empty(); })) << "the watcher knows by the name";
  item.setInserted(true);
  item.setInserted(false);
  item.setInserted(true);
  ASSERT_TRUE(comes());
  EXPECT_FALSE(watcher->item().empty());
  EXPECT_NE(layout().find("Hide__It"), std::string::npos);
}

TEST_F(StatusNotifierItemTest, TellsOfMailAndTakesClicks) {
  watcher.emplace();
  item.setInserted(true);
  ASSERT_TRUE(comes());
  EXPECT_EQ(property("Status"), "(<'Active'>,)");
  item.setFace({.attention = true, .title = "Ondrel: 3", .toolTip = "3 unread mails", .label = "3"});
  for (const auto& [name, value] : {std::pair("Status", "'NeedsAttention'"),
                                    {"Title", "'Ondrel: 3'"},
                                    {"ToolTip", "('', @a(iiay) [], 'Ondrel', '3 unread mails')"},
                                    {"IconName", "'mail-unread-symbolic'"},
                                    {"Menu", "objectpath '/MenuBar'"},
                                    {"ItemIsMenu", "false"},
                                    {"XAyatanaLabel", "'3'"}})
    EXPECT_EQ(property(name), "(<" + std::string(value) + ">,)") << name;

  const auto click = [this](const char* method, GVariant* arguments) {
    EXPECT_EQ(ask("/StatusNotifierItem", "org.kde.StatusNotifierItem", method, arguments), "()");
  };
  click("Scroll", g_variant_new("(is)", 120, "vertical"));
  EXPECT_EQ(log, "");
  click("ProvideXdgActivationToken", g_variant_new("(s)", "token"));
  click("Activate", g_variant_new("(ii)", 5, 5));
  EXPECT_EQ(log, "token activated ");

  const auto rows = layout();
  const auto idOfSettings = std::stoi(rows.substr(rows.rfind("<(") + 2)); // the last one
  watcher->send("/MenuBar", "com.canonical.dbusmenu", "Event",
                g_variant_new("(isvu)", idOfSettings, "clicked", g_variant_new_int32(0), 0));
  EXPECT_TRUE(until([this] { return log == "token activated settings "; })) << log << rows;
}

} // namespace

} // namespace ondrel::platform
