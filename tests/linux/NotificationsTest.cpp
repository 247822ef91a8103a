#include "BusTest.h"
#include "async/Deadline.h"
#include "platform/linux/desktop/ActivationToken.h"
#include "platform/linux/notifications/DesktopNotifications.h"
#include "support/FakeDesktop.h"
#include "support/NotificationServer.h"

#include <fmt/format.h>
#include <gio/gunixsocketaddress.h>
#include <gmock/gmock.h>
#include <unistd.h>

#include <chrono>
#include <memory>

namespace ondrel::platform {

namespace {

using namespace std::chrono_literals;
using support::NotificationServer;
using testing::ElementsAre;
using testing::HasSubstr;
using Behaviour = NotificationServer::Behaviour;
using Strings = std::vector<std::string>;
using Result = std::expected<void, std::string>;

class NotificationsTest : public BusTest, protected NotificationCenterDelegate {
 protected:
  NotificationsTest() {
    center = make(connector());
    server = std::make_unique<NotificationServer>(bus.address());
  }
  ~NotificationsTest() override {
    center.reset();
    server.reset();
  }

  std::unique_ptr<notifications::DesktopNotifications> make(desktop::BusConnector connectToBus) {
    auto made =
        std::make_unique<notifications::DesktopNotifications>(notifications::DesktopNotifications::Options{
            .applicationId = "org.velmora.Ondrel",
            .applicationName = "Ondrel",
            .useActivationToken = [this](auto token) { log.push_back("token " + token); },
            .lasting = {{.actions = G_ACTION_MAP(actions.get()),
                         .defaults = defaults,
                         .sealKey = "key",
                         .activate = [this] { log.emplace_back("front"); }}},
            .bus = std::move(connectToBus)});
    made->setDelegate(this);
    made->setCategories({{"MAIL", {{"DELETE", "Delete", true}, {"READ", "Mark as \x01read", false}}}});
    return made;
  }

  void willPresent(const NotificationRequest& request) override {
    log.push_back("present " + request.identifier);
  }
  void didReceive(const NotificationResponse& response) override {
    const auto& info = response.request.content.userInfo;
    log.push_back(fmt::format("{} {} {}", response.actionIdentifier, response.request.identifier,
                              info.contains("emailId") ? info.at("emailId") : ""));
  }

  static NotificationRequest request(const std::string& identifier, const std::string& title = "Ada",
                                     const std::string& body = "Hello",
                                     const std::string& category = "MAIL") {
    return {identifier, {title, body, category, {{"emailId", "M" + identifier}}}};
  }
  // The text of the error; empty when it was delivered.
  std::string add(NotificationRequest notification) {
    const auto added = result(center->add(std::move(notification)));
    return !added ? "no end" : *added ? "" : added->error();
  }
  NotificationServer::Notification last() const { return server->notifications().back(); }

  Strings log;
  support::FakeDefaults defaults;
  glib::Ref<GSimpleActionGroup> actions = glib::adopt(g_simple_action_group_new());
  std::unique_ptr<NotificationServer> server;
  std::unique_ptr<notifications::DesktopNotifications> center;
};

TEST_F(NotificationsTest, ShowsWhatTheServerCanShow) {
  const std::string hostile = "<b>a & b</b>\n\u202Ecod\xff";
  ASSERT_EQ(add(request("1", hostile, hostile)), "");
  auto shown = last();
  EXPECT_EQ(shown.summary, "<b>a & b</b> cod\uFFFD") << "a title is never markup";
  EXPECT_EQ(shown.body, "&lt;b&gt;a &amp; b&lt;/b&gt; cod\uFFFD");
  EXPECT_THAT(shown.actions, ElementsAre("default", "Open", "READ", "Mark as  read", "DELETE", "Delete"));
  EXPECT_THAT(shown.hints, testing::Contains(testing::Pair("desktop-entry", "'org.velmora.Ondrel'")));
  auto several = request("1b", "", "first");
  several.content.furtherLines = {"<2>\n", "3"};
  ASSERT_EQ(add(several), "");
  EXPECT_EQ(last().body, "first\n&lt;2&gt; \n3");

  ASSERT_EQ(add(request("2", "a", "b", "no such category")), "");
  EXPECT_THAT(last().actions, ElementsAre("default", "Open"));
  EXPECT_EQ(server->calls("GetCapabilities"), 1) << "they don't change while the server runs";

  server->setCapabilities({"body", "body-hyperlinks"});
  server->restart();
  ASSERT_EQ(add(request("2b", hostile, hostile)), "");
  EXPECT_TRUE(last().body.starts_with("&lt;b&gt;")) << "a server that shows links reads markup";

  server->setCapabilities({"body"});
  server->restart();
  ASSERT_EQ(add(request("3", hostile, hostile)), "");
  EXPECT_EQ(last().body, "<b>a & b</b> cod\uFFFD") << "the server shows it as it is";
  EXPECT_THAT(last().actions, ElementsAre());
  EXPECT_EQ(server->calls("GetCapabilities"), 3);
  EXPECT_EQ(log, (Strings{"present 1", "present 1b", "present 2", "present 2b", "present 3"}));
}

TEST_F(NotificationsTest, CutsLongTextsAtACharacter) {
  std::string text;
  for (int i = 0; i < 200000; ++i)
    text += "ä";
  ASSERT_EQ(add(request("1", text, text + "&")), "");
  EXPECT_EQ(last().summary, text.substr(0, 2 * notifications::DesktopNotifications::longestTitle) + "…");
  EXPECT_EQ(last().body, text.substr(0, 2 * notifications::DesktopNotifications::longestBody) + "…");
  // Cut first and escaped then: no half an entity.
  ASSERT_EQ(add(request("2", "", std::string(5000, '<'))), "");
  EXPECT_TRUE(last().body.ends_with("&lt;…"));
}

TEST_F(NotificationsTest, TellsOfActionsOnceAndOnlyOfThoseOffered) {
  for (const auto* identifier : {"1", "2", "3", "4"})
    ASSERT_EQ(add(request(identifier)), "");
  log.clear();
  server->invoke(1, "default", "token-1");
  server->invoke(1, "default"); // nobody clicks twice
  server->invoke(2, "DELETE", "bad token\n");
  server->invoke(99, "default", "foreign"); // of another application
  server->invoke(3, "BURN");
  server->emit("ActionInvoked", g_variant_new("(s)", "default"));
  server->emit("ActionInvoked", g_variant_new("(xs)", G_GINT64_CONSTANT(3), "default"));
  server->emit("ActivationToken", g_variant_new("(u)", 3U));
  server->emit("NotificationClosed", g_variant_new("(s)", "3"));
  server->close(4);
  server->invoke(4, "default");
  server->invoke(3, "READ");
  hear();
  EXPECT_EQ(log, (Strings{"token token-1", "default 1 M1", "DELETE 2 M2", "READ 3 M3"}));

  ASSERT_EQ(add(request("5")), "");
  center->setDelegate(nullptr);
  log.clear();
  server->invoke(5, "default");
  hear();
  EXPECT_EQ(log, Strings());
}

TEST_F(NotificationsTest, TakesBackWhatIsThereOrComesLater) {
  for (const auto* identifier : {"1", "2", "3"})
    ASSERT_EQ(add(request(identifier)), "");
  server->close(2);
  server->invoke(3, "default");
  hear();
  for (const auto* identifier : {"1", "1", "2", "3", "never"})
    center->withdraw(identifier);
  ASSERT_TRUE(until([&] { return server->calls("CloseNotification") == 1; }));
  hear();
  EXPECT_THAT(server->closed(), ElementsAre(1)) << "numbers that are used up may be another's";

  server->setBehaviour(Behaviour::silent);
  std::optional<Result> late;
  start(center->add(request("4")), late);
  ASSERT_TRUE(until([&] { return server->notifications().size() == 4; }));
  center->withdraw("4");
  log.clear();
  server->answerHeldBack();
  ASSERT_TRUE(until([&] { return server->closed().size() == 2; }));
  server->invoke(4, "default");
  hear();
  EXPECT_EQ(server->closed().back(), 4u);
  EXPECT_EQ(log, Strings());
}

TEST_F(NotificationsTest, HandsOverWhatAnotherRunCanAnswer) {
  server->takeLasting("org.velmora.Ondrel");
  ASSERT_EQ(add(request("1")), "");
  center->setCategories({{"LASTING", {{"DELETE", "Delete", true}}, true}});
  ASSERT_EQ(add(request("2", "Ada", "Hello", "LASTING")), "");
  server->setBehaviour(Behaviour::silent);
  std::optional<Result> third, fourth;
  start(center->add(request("3", "Bob", "Late\n", "LASTING")), third);
  start(center->add(request("4", "Bob", "Read meanwhile", "LASTING")), fourth);
  ASSERT_TRUE(until([&] { return server->notifications().size() == 4; }));
  center->withdraw("4");
  server->setBehaviour(Behaviour::answer);
  center->handOver();
  ASSERT_TRUE(until([&] { return server->closed().size() == 2; }));
  ASSERT_EQ(server->lasting().size(), 2U);
  EXPECT_THAT(glib::CString(g_variant_print(server->lasting().at("3").get(), FALSE)).get(),
              HasSubstr("'body': <'Late '>"));
  server->answerHeldBack();
  ASSERT_TRUE(until([&] { return server->closed().size() == 4; })) << "nothing is shown twice";
  const std::string shown = glib::CString(g_variant_print(server->lasting().at("2").get(), FALSE)).get();
  EXPECT_THAT(shown,
              HasSubstr("'title': <'Ada'>, 'body': <'Hello'>, 'priority': <'low'>, 'default-action':"));
  EXPECT_THAT(shown, HasSubstr("{'label': <'Delete'>, 'action': <'app.answer-notification'>"));

  center.reset();
  center = make(connector());
  log.clear();
  const auto begin = shown.find("(('2'");
  const auto target = shown.substr(begin, shown.find("')>", begin) + 2 - begin);
  auto forged = target;
  forged.replace(forged.find("default"), 7, "DELETE");
  for (const auto& answer : {target, forged}) {
    const glib::Owned<GVariant> parsed(g_variant_parse(nullptr, answer.c_str(), nullptr, nullptr, nullptr));
    g_action_group_activate_action(G_ACTION_GROUP(actions.get()), "answer-notification", parsed.get());
  }
  EXPECT_EQ(log, (Strings{"default 2 M2", "front"}));
}

TEST_F(NotificationsTest, IgnoresTheSignalsOfOthers) {
  ASSERT_EQ(add(request("1")), "");
  const auto stranger = bus.connect();
  const auto say = [&](const char* receiver, const char* member, GVariant* arguments) {
    g_dbus_connection_emit_signal(stranger.get(), receiver, NotificationServer::path,
                                  NotificationServer::name, member, arguments, nullptr);
  };
  log.clear();
  const char* everybody = nullptr;
  for (const char* receiver : {everybody, g_dbus_connection_get_unique_name(connection.get())}) {
    say(receiver, "ActionInvoked", g_variant_new("(us)", 1U, "DELETE"));
    say(receiver, "ActivationToken", g_variant_new("(us)", 1U, "stolen"));
    say(receiver, "NotificationClosed", g_variant_new("(uu)", 1U, 2U));
  }
  support::TestBus::roundTrip(stranger);
  server->invoke(1, "default");
  hear();
  EXPECT_EQ(log, Strings{"default 1 M1"});
}

TEST_F(NotificationsTest, ForgetsWhatAnEarlierServerShowed) {
  ASSERT_EQ(add(request("old")), "");
  server->restart();
  log.clear();
  server->invoke(1, "default"); // the new server's first is none of ours
  hear();
  EXPECT_EQ(log, Strings());

  server->setNextId(1);
  ASSERT_EQ(add(request("new")), "");
  log.clear();
  server->invoke(1, "default");
  hear();
  EXPECT_EQ(log, Strings{"default new Mnew"});
}

TEST_F(NotificationsTest, GivesUpOnASilentServerAndStillKnowsItsNotifications) {
  ASSERT_EQ(add(request("1")), "");
  server->setBehaviour(Behaviour::silent);
  std::optional<Result> second;
  start(center->add(request("2")), second);
  ASSERT_TRUE(until([&] { return server->notifications().size() == 2; }));
  loop.advance(notifications::DesktopNotifications::answerLimit - 1ns);
  turn();
  EXPECT_FALSE(second);
  loop.advance(1ns);
  turn();
  ASSERT_TRUE(second);
  EXPECT_EQ(second->error(), "The notification server doesn't answer");

  log.clear();
  server->answerHeldBack();
  server->invoke(2, "default"); // right behind the answer
  server->invoke(1, "READ");
  hear();
  EXPECT_EQ(log, (Strings{"default 2 M2", "READ 1 M1"}));
  server->setBehaviour(Behaviour::answer);
  EXPECT_EQ(add(request("4")), "");
}

TEST_F(NotificationsTest, LosesOneNotificationToARefusalOrANonsenseAnswerAndNoMore) {
  ASSERT_EQ(add(request("1")), "");
  server->setBehaviour(Behaviour::refuse);
  EXPECT_EQ(add(request("2")), "org.example.Error.Refused: not today");
  server->setBehaviour(Behaviour::garbage);
  EXPECT_THAT(add(request("3")), HasSubstr("wrong type"));
  server->restart(); // nonsense for capabilities too
  EXPECT_THAT(add(request("4", "a", "<b>")), HasSubstr("wrong type"));
  EXPECT_EQ(last().body, "<b>") << "what isn't told isn't there";
  EXPECT_THAT(last().actions, ElementsAre());
  server->setBehaviour(Behaviour::answer);
  EXPECT_EQ(add(request("5", "a", "<b>")), "");
  EXPECT_EQ(last().body, "&lt;b&gt;");
}

TEST_F(NotificationsTest, TriesAgainWhenTheServerHasJustGone) {
  ASSERT_EQ(add(request("1")), "");
  // The bus knows of the restart, the program has not heard of it yet.
  server->setCapabilities({});
  server->restart();
  std::optional<Result> second;
  start(center->add(request("2", "a", "<b>")), second);
  loop.runUntilIdle(); // sends, and reads nothing
  ASSERT_TRUE(until([&] { return second.has_value(); }));
  EXPECT_TRUE(*second);
  ASSERT_EQ(server->notifications().size(), 2u);
  EXPECT_EQ(last().body, "<b>") << "made for the server that got it";

  // Gone in the middle of a call: it may have been shown, so not again.
  server->setBehaviour(Behaviour::silent);
  std::optional<Result> third;
  start(center->add(request("3")), third);
  ASSERT_TRUE(until([&] { return server->notifications().size() == 3; }));
  server->stop();
  ASSERT_TRUE(until([&] { return third.has_value(); }));
  EXPECT_THAT(third->error(), HasSubstr("org.freedesktop.DBus.Error.NoReply"));

  EXPECT_THAT(add(request("4")), HasSubstr("org.freedesktop.DBus.Error.ServiceUnknown"));
  server->setBehaviour(Behaviour::answer);
  server->start();
  EXPECT_EQ(add(request("5")), "");
  EXPECT_EQ(server->notifications().size(), 4u);
}

TEST_F(NotificationsTest, IsAuthorizedByAServerThatIsOrCanBeThere) {
  const auto authorized = [this](notifications::DesktopNotifications& asked) -> std::string {
    const auto granted = result(asked.requestAuthorization());
    const auto status = result(asked.authorizationStatus());
    if (!granted || !status)
      return "no end";
    return fmt::format("{} {}", *granted ? (**granted ? "yes" : "no") : granted->error(),
                       static_cast<int>(*status));
  };
  EXPECT_EQ(authorized(*center), "yes 2");
  server->stop();
  EXPECT_EQ(authorized(*center), "no 1");
  bus.addService(NotificationServer::name, "/bin/false");
  EXPECT_EQ(authorized(*center), "yes 2");
  EXPECT_THAT(add(request("1")), HasSubstr("org.freedesktop.DBus.Error.Spawn"));

  const auto lonely = make(connectorTo("unix:path=/nonexistent"));
  EXPECT_EQ(authorized(*lonely), "no 1");
  const auto added = result(lonely->add(request("2")));
  ASSERT_TRUE(added && !*added);
  EXPECT_EQ(added->error(), "There is no session bus");

  bus.stop();
  EXPECT_THAT(authorized(*center), testing::EndsWith(" 0"));
  EXPECT_NE(add(request("3")), "");
}

TEST_F(NotificationsTest, DoesNotHangOnABusThatNeverAnswers) {
  const auto name = fmt::format("ondrel-mute-bus-{}", getpid());
  const auto address =
      glib::adopt(g_unix_socket_address_new_with_type(name.c_str(), -1, G_UNIX_SOCKET_ADDRESS_ABSTRACT));
  const auto listener = glib::adopt(g_socket_listener_new());
  ASSERT_TRUE(g_socket_listener_add_address(listener.get(), address.get(), G_SOCKET_TYPE_STREAM,
                                            G_SOCKET_PROTOCOL_DEFAULT, nullptr, nullptr, nullptr));
  auto mute = make(connectorTo("unix:abstract=" + name));
  std::optional<Result> added;
  std::optional<std::expected<bool, std::string>> authorized;
  start(mute->add(request("1")), added);
  start(mute->requestAuthorization(), authorized);
  turn();
  loop.advance(notifications::DesktopNotifications::answerLimit);
  turn();
  EXPECT_TRUE(added && !*added);
  EXPECT_TRUE(authorized && !(authorized->has_value() && **authorized));
  mute.reset();
}

TEST_F(NotificationsTest, MayEndWhileTheServerStillThinks) {
  ASSERT_EQ(add(request("1")), "");
  server->setBehaviour(Behaviour::silent);
  std::optional<Result> second;
  start(center->add(request("2")), second);
  ASSERT_TRUE(until([&] { return server->notifications().size() == 2; }));
  center.reset();
  log.clear();
  server->answerHeldBack();
  server->invoke(2, "default");
  ASSERT_TRUE(until([&] { return second.has_value(); }));
  hear();
  EXPECT_FALSE(*second);
  EXPECT_EQ(log, Strings());
}

TEST(ActivationTokenTest, ServesOnceAndSoon) {
  async::VirtualEventLoop loop;
  desktop::ActivationToken token;
  EXPECT_EQ(token.take(), std::nullopt);
  token.set("a");
  token.set("b");
  loop.advance(desktop::ActivationToken::lifetime - 1ns);
  EXPECT_EQ(token.take(), "b");
  EXPECT_EQ(token.take(), std::nullopt);
  token.set("c");
  loop.advance(desktop::ActivationToken::lifetime);
  EXPECT_EQ(token.take(), std::nullopt);
}

} // namespace

} // namespace ondrel::platform
