// Links that the desktop, other programs and other starts hand over.
#include "UserHandsTest.h"
#include "support/TestBus.h"

#include <algorithm>
#include <csignal>
#include <filesystem>
#include <fstream>

namespace ondrel::e2e {
namespace {

namespace fs = std::filesystem;
using namespace std::chrono_literals;
using support::TestBus;

class LinksTest : public UserHandsTest {
 protected:
  // As the package does, in this profile.
  void install(bool activatable) {
    std::ifstream source(DESKTOP_FILE);
    std::string entry;
    for (std::string line; std::getline(source, line);)
      if (line.starts_with("Exec=ondrel"))
        entry += "Exec=" ONDREL_PROGRAM + line.substr(11) + "\n";
      else if (activatable || !line.starts_with("DBusActivatable"))
        entry += line + "\n";
    write(profile / "data/applications/org.velmora.Ondrel.desktop", entry);
    write(profile / "config/mimeapps.list",
          "[Default Applications]\nx-scheme-handler/mailto=org.velmora.Ondrel.desktop\n");
    const auto folder = profile.string();
    outputs.push_back(profile / "output-service");
    bus.addService("org.velmora.Ondrel",
                   "/bin/sh -c \"XDG_CONFIG_HOME=" + folder + "/config XDG_DATA_HOME=" + folder +
                       "/data XDG_CACHE_HOME=" + folder + "/cache ONDREL_SITE=" + folder +
                       "/site.json ONDREL_LOG=debug exec " ONDREL_PROGRAM " --gapplication-service >" +
                       outputs.back() + " 2>&1\"");
  }
  std::unique_ptr<Process> startOnBus(std::vector<std::string> arguments = {}) {
    return start(std::move(arguments), {{"DBUS_SESSION_BUS_ADDRESS", bus.address()}});
  }
  void openByDesktop(const std::string& url) {
    Process gio("/usr/bin/gio", {"open", url},
                {{"DBUS_SESSION_BUS_ADDRESS", bus.address()},
                 {"XDG_DATA_HOME", profile / "data"},
                 {"XDG_CONFIG_HOME", profile / "config"},
                 {"XDG_CACHE_HOME", profile / "cache"},
                 {"ONDREL_SITE", profile / "site.json"},
                 {"ONDREL_LOG", "debug"}},
                profile / "output-gio");
    EXPECT_EQ(gio.wait(40s), 0) << gio.output();
  }
  glib::Owned<GVariant> call(const char* interface, const char* method, const char* name, GVariant* arguments,
                             GDBusCallFlags flags = G_DBUS_CALL_FLAGS_NO_AUTO_START) {
    return glib::Owned<GVariant>(g_dbus_connection_call_sync(caller.get(), name, "/org/velmora/Ondrel",
                                                             interface, method, arguments, nullptr, flags,
                                                             20000, nullptr, nullptr));
  }
  void open(const std::vector<const char*>& urls) {
    EXPECT_TRUE(
        call("org.freedesktop.Application", "Open", program,
             g_variant_new("(@asa{sv})", g_variant_new_strv(urls.data(), static_cast<gssize>(urls.size())),
                           nullptr)));
  }
  std::string getAddress() {
    const auto answer = call("org.velmora.Ondrel.Scripting", "GetAddress", program, nullptr);
    const char* text = "no answer";
    if (answer)
      g_variant_get(answer.get(), "(&s)", &text);
    return text;
  }
  bool hasLetter(const std::string& query) {
    return sessionBecomes([&](const auto& saved) {
      return std::ranges::any_of(saved.windows.at(0).tabs, [&](const auto& tab) {
        return tab.urlString == address + "mail/compose?" + query;
      });
    });
  }
  // The one that was started behind the test's back.
  bool endProgram() {
    const auto id = call("org.freedesktop.DBus", "GetConnectionUnixProcessID", "org.freedesktop.DBus",
                         g_variant_new("(s)", program));
    guint32 process = 0;
    if (!id)
      return false;
    g_variant_get(id.get(), "(u)", &process);
    kill(static_cast<pid_t>(process), SIGTERM);
    return eventually([process] { return kill(static_cast<pid_t>(process), 0) != 0; });
  }

  static constexpr const char* program = "org.velmora.Ondrel";
  TestBus bus;
  glib::Ref<GDBusConnection> caller = bus.connect();
};

TEST_F(LinksTest, TheDesktopOpensALetterColdAndWarm) {
  for (const bool activatable : {false, true}) {
    install(activatable);
    fs::remove(sessionFile());
    openByDesktop("mailto:anna@example.org?subject=Cold&body=1+1");
    if (!activatable) {
      focus("Sign in.*");
      press("Tab Return");
    }
    focus("New message");
    openByDesktop("mailto:bert@example.org");
    EXPECT_TRUE(hasLetter("to=bert@example.org"));
    ASSERT_TRUE(endProgram());
    EXPECT_TRUE(hasLetter("to=anna@example.org&subject=Cold&body=1%2B1"));
    EXPECT_EQ(session()->windows.at(0).tabs.size(), 2U);
  }
}

TEST_F(LinksTest, ACommandThatStartsTheProgramOpensOneWindow) {
  install(true);
  EXPECT_TRUE(call("org.freedesktop.Application", "ActivateAction", program,
                   g_variant_new("(sava{sv})", "new-window", nullptr, nullptr), G_DBUS_CALL_FLAGS_NONE));
  focus("Sign in.*");
  ASSERT_TRUE(endProgram());
  EXPECT_TRUE(session() && session()->windows.size() == 1);
}

TEST_F(LinksTest, NothingIsLostAndNothingOpenedTwice) {
  const auto one = startOnBus({"mailto:one@x"});
  const auto two = startOnBus({"mailto:two@x"});
  ASSERT_TRUE(eventually([&] { return one->isRunning() != two->isRunning(); }));
  auto& first = one->isRunning() ? *one : *two;
  // Nobody gives it the keyboard.
  ASSERT_TRUE(waitForPage(first)) << first.output();
  const auto big = "mailto:big@x?body=" + std::string(1 << 20, 'x');
  open({big.c_str(), "mailto:%00", "--version", "", "a b", "mailto:?subject=last"});
  for (const auto* query : {"to=one@x", "to=two@x", "subject=last"})
    EXPECT_TRUE(hasLetter(query)) << query;
  EXPECT_EQ(count(first.output(), "mailto received"), 5U);
  EXPECT_EQ(count(first.output(), "Unexpected URL: "), 2U);
  EXPECT_EQ(quit(first), 0);
  ASSERT_TRUE(session());
  EXPECT_EQ(session()->windows.at(0).tabs.size(), 5U);
}

TEST_F(LinksTest, TheHelperMakesTheProgramTheOneThatOpensLetters) {
  install(false);
  fs::remove(profile / "config/mimeapps.list");
  write(profile / "data/applications/org.example.Game.desktop",
        "[Desktop Entry]\nType=Application\nName=Game\nExec=/bin/true\n");
  const auto folder = profile.string();
  constexpr const char* helper = "org.velmora.Ondrel.DefaultMailHelper";
  bus.addService(helper, "/usr/bin/env XDG_CONFIG_HOME=" + folder + "/config XDG_DATA_HOME=" + folder +
                             "/data " DEFAULT_MAIL_HELPER);
  const auto ask = [&](const char* identifier) -> std::string {
    const glib::Owned<GVariant> answer(
        g_dbus_connection_call_sync(caller.get(), helper, "/org/velmora/Ondrel/DefaultMailHelper", helper,
                                    "SetAsDefaultMailClient", g_variant_new("(s)", identifier),
                                    G_VARIANT_TYPE("(bs)"), G_DBUS_CALL_FLAGS_NONE, 20000, nullptr, nullptr));
    return answer ? glib::CString(g_variant_print(answer.get(), FALSE)).get() : "no answer";
  };
  EXPECT_TRUE(ask("org.example.Nobody").starts_with("(false, 'The application is not installed"));
  EXPECT_TRUE(ask("org.example.Game").contains("t open mail links"));
  EXPECT_EQ(ask(program), "(true, '')");
  EXPECT_TRUE(
      read(profile / "config/mimeapps.list").contains("x-scheme-handler/mailto=org.velmora.Ondrel.desktop"));
}

TEST_F(LinksTest, AMessageHasAnAddressThatLeadsBackToIt) {
  const auto program = startOnBus();
  ASSERT_NE(signIn(*program), 0U);
  press("j o");
  ASSERT_TRUE(
      sessionBecomes([](const auto& saved) { return saved.windows[0].tabs[0].urlString.contains("/T1."); }));
  EXPECT_EQ(getAddress(), "") << "no tool runs";
  TestBus::ownName(caller, "org.velmora.linker");
  std::string address;
  EXPECT_TRUE(eventually([&] { return (address = getAddress()).contains("](email://"); })) << address;
  press("u");
  EXPECT_TRUE(
      sessionBecomes([](const auto& saved) { return saved.windows[0].tabs[0].urlString.contains("/?u="); }));
  EXPECT_EQ(getAddress(), "no answer") << "an error: none is selected";

  const auto link = address.substr(address.find("email://"), address.size() - address.find("email://") - 1);
  EXPECT_EQ(startOnBus({link})->wait(20s), 0);
  EXPECT_TRUE(sessionBecomes([](const auto& saved) {
    return saved.windows[0].tabs[0].urlString.contains("/T1.");
  })) << link;
  EXPECT_EQ(quit(*program), 0);
}

} // namespace
} // namespace ondrel::e2e
