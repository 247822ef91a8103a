// New mail from the service's stream to the desktop and back, on message buses of the test's own.
#include "UserHandsTest.h"
#include "support/NotificationServer.h"
#include "support/TestBus.h"

#include <boost/json/serialize.hpp>

#include <algorithm>

namespace ondrel::e2e {
namespace {

using namespace std::chrono_literals;
using support::NotificationServer;
using support::TestBus;

class NewMailTest : public UserHandsTest {
 protected:
  // The program with its user signed in and the stream of a service open that says no more than it must.
  void begin() {
    order("/control/stream", {{"action", "terse"}});
    TestBus::ownName(logind_, "org.freedesktop.login1");
    program_ = start({}, buses_);
    ASSERT_NE(signIn(*program_), 0U) << program_->output();
    ASSERT_TRUE(eventually([this] { return listeners() == 1; }, 40s)) << program_->output();
  }
  void TearDown() override {
    if (program_)
      EXPECT_EQ(quit(*program_), 0);
    program_.reset();
    UserHandsTest::TearDown();
  }

  std::int64_t listeners() const { return askService("/control/stream").at("listeners").as_int64(); }
  std::string deliver(const boost::json::object& mail) const {
    return std::string(order("/control/deliver", mail).at("emailId").as_string());
  }
  bool notifiedOf(const std::string& subject) const {
    return eventually([&] {
      return std::ranges::count(server_.notifications(), subject, &NotificationServer::Notification::body) ==
             1;
    });
  }

  TestBus bus_;
  TestBus systemBus_;
  const Environment buses_{{"DBUS_SESSION_BUS_ADDRESS", bus_.address()},
                           {"DBUS_SYSTEM_BUS_ADDRESS", systemBus_.address()}};
  glib::Ref<GDBusConnection> logind_ = systemBus_.connect();
  NotificationServer server_{bus_.address()};
  std::unique_ptr<Process> program_;
};

TEST_F(NewMailTest, IsNotifiedOfOpenedAndDeleted) {
  begin();
  const auto first = deliver({{"subject", "Lunch & <b>more</b>"}, {"fromName", "Ann Example"}});
  ASSERT_TRUE(notifiedOf("Lunch &amp; &lt;b&gt;more&lt;/b&gt;")) << program_->output();
  const auto shown = server_.notifications().at(0);
  EXPECT_EQ(shown.summary, "Ann Example");
  EXPECT_EQ(shown.actions,
            (std::vector<std::string>{"default", "Open", "ARCHIVE_EMAIL", "Archive", "MARK_EMAIL_AS_READ",
                                      "Mark as Read", "DELETE_EMAIL", "Delete"}));

  server_.invoke(shown.id, "default");
  EXPECT_TRUE(sessionBecomes([&](const auto& saved) {
    return saved.windows.at(0).tabs.at(0).urlString.contains("/mail/Inbox/" + first + "?u=12345678");
  })) << read(sessionFile());
  EXPECT_EQ(windows().size(), 1U) << "in the window that shows mail";

  deliver({{"subject", "Filed away"}, {"mailbox", "archive"}});
  const auto last = deliver({{"subject", "To be deleted"}, {"from", nullptr}});
  ASSERT_TRUE(notifiedOf("To be deleted")) << program_->output();
  EXPECT_EQ(server_.notifications().size(), 2U) << "what a rule has filed away is not told";
  server_.invoke(server_.notifications().at(1).id, "DELETE_EMAIL");
  EXPECT_TRUE(eventually([&] {
    const auto requests = boost::json::serialize(askService("/control/jmap-requests"));
    return requests.contains("Email/set") && requests.contains(last);
  })) << program_->output();

  const auto token = std::string(order("/control/token").at("accessToken").as_string());
  EXPECT_FALSE(program_->output().contains(token));
}

TEST_F(NewMailTest, StartsTheProgramByAClickAfterItsEnd) {
  constexpr const char* application = "org.velmora.Ondrel";
  server_.takeLasting(application);
  begin();
  const auto email = deliver({{"subject", "For later"}});
  ASSERT_TRUE(notifiedOf("For later")) << program_->output();
  EXPECT_EQ(quit(*program_), 0);
  ASSERT_TRUE(eventually([&] { return server_.lasting().size() == 1; })) << program_->output();
  bus_.addService(application, "/bin/sleep 60"); // the bus keeps the call for whoever takes the name
  const auto desktop = bus_.connect();
  const glib::Owned<GVariant> target(
      g_variant_lookup_value(server_.lasting().begin()->second.get(), "default-action-target", nullptr));
  g_dbus_connection_call(desktop.get(), application, "/org/velmora/Ondrel", "org.freedesktop.Application",
                         "ActivateAction",
                         g_variant_new_parsed("('answer-notification', [%v], @a{sv} {})", target.get()),
                         nullptr, G_DBUS_CALL_FLAGS_NONE, -1, nullptr, nullptr, nullptr);
  program_ = start({"--gapplication-service"}, buses_);
  const auto page = "installed on " + address + "mail/Inbox/" + email;
  EXPECT_TRUE(eventually([&] { return program_->output().contains(page); })) << program_->output();
  EXPECT_EQ(windows().size(), 1U);
}

TEST_F(NewMailTest, IsFoundAfterSleepAndWithARenewedToken) {
  begin();
  order("/control/stream", {{"action", "drop"}});
  ASSERT_TRUE(eventually([this] { return listeners() == 0; }));
  order("/control/deliver", {{"subject", "While nobody listened"}, {"count", 60}});
  // Instead of waiting for the pause to pass: the machine wakes up.
  g_dbus_connection_emit_signal(logind_.get(), nullptr, "/org/freedesktop/login1",
                                "org.freedesktop.login1.Manager", "PrepareForSleep",
                                g_variant_new("(b)", FALSE), nullptr);
  ASSERT_TRUE(eventually([&] { return !server_.notifications().empty(); })) << program_->output();
  const auto shown = server_.notifications().at(0);
  EXPECT_EQ(shown.summary, "60 new messages");
  EXPECT_TRUE(shown.body.starts_with("From ") && shown.body.contains(": While nobody listened\n"))
      << shown.body;
  EXPECT_EQ(shown.actions, (std::vector<std::string>{"default", "Open"}));

  order("/control/expire-token");
  deliver({{"subject", "With another token"}});
  EXPECT_TRUE(notifiedOf("With another token")) << program_->output();
  EXPECT_EQ(quit(*program_), 0);
  program_.reset();
  EXPECT_TRUE(eventually([&] { return server_.closed() == std::vector<std::uint32_t>{1, 2}; }))
      << "nobody would answer";
}

TEST_F(NewMailTest, IsToldOfWithoutAWindowAfterAStartInTheBackground) {
  begin();
  press("j o");
  const auto isOpen = [](const auto& saved) {
    return saved.windows.at(0).tabs.at(0).urlString.contains("/T1.");
  };
  ASSERT_TRUE(sessionBecomes(isOpen));
  ASSERT_EQ(quit(*program_), 0);
  program_ = start({"--background"}, buses_);
  ASSERT_TRUE(eventually([this] { return listeners() == 1 && windows().empty(); }, 40s))
      << program_->output();
  deliver({{"subject", "While nobody looks"}});
  ASSERT_TRUE(notifiedOf("While nobody looks")) << program_->output();
  EXPECT_EQ(start({"--background"}, buses_)->wait(20s), 0);
  EXPECT_TRUE(windows().empty());
  EXPECT_TRUE(isOpen(*session()));
  EXPECT_EQ(start({}, buses_)->wait(20s), 0);
  EXPECT_TRUE(eventually([] { return windows().size() == 1; }));
  EXPECT_TRUE(waitForPage(*program_)); // a page's process that ends at its start complains
  EXPECT_TRUE(isOpen(*session()));
  focus(*windows().begin());
  press("ctrl+w");
  EXPECT_TRUE(eventually(
      [this] { return server_.notifications().back().summary == "Ondrel runs in the background"; }));
  server_.invoke(server_.notifications().back().id, "quit");
  EXPECT_EQ(program_->wait(20s), 0);
  program_.reset();
}

} // namespace
} // namespace ondrel::e2e
