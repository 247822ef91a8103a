#include "BusTest.h"
#include "PortalStandIn.h"
#include "platform/linux/portal/BackgroundPortal.h"
#include "platform/linux/portal/PortalShortcuts.h"
#include "support/FakeDesktop.h"
#include "support/LogCapture.h"

#include <gmock/gmock.h>

namespace ondrel::platform::portal {
namespace {

using testing::ElementsAre;
using testing::HasSubstr;
using Shortcut = std::expected<std::string, std::string>;

class PortalTest : public BusTest {
 protected:
  std::unique_ptr<PortalShortcuts> shortcuts() {
    auto made = std::make_unique<PortalShortcuts>(
        PortalShortcuts::Options{.description = "Hide or show",
                                 .triggerText = [](const KeyCombination& keys) { return "CTRL+" + keys.key; },
                                 .useActivationToken = [this](const std::string& t) { told.push_back(t); }},
        connector());
    performed = made->performed.subscribe([this](const std::string& name) { told.push_back(name); });
    return made;
  }
  Shortcut reserve(PortalShortcuts& shortcuts) {
    return result(shortcuts.reserve("toggle", {.control = true, .key = "m"}))
        .value_or(std::unexpected("nothing"));
  }

  support::LogCapture log;
  std::vector<std::string> told;
  base::Subscription performed;
};

TEST_F(PortalTest, KeysAreTheDesktopsToGive) {
  const auto alone = shortcuts();
  turn();
  EXPECT_FALSE(*alone->isAvailable()) << "there is no portal";
  support::PortalStandIn portal(bus);
  for (const bool early : {false, true}) {
    portal.answersBeforeReply = early;
    const auto keys = shortcuts();
    ASSERT_TRUE(until([&] { return *keys->isAvailable(); }));
    EXPECT_EQ(reserve(*keys), "Press <Meta>+M");
    EXPECT_THAT(portal.calls.back(), HasSubstr("'preferred_trigger': <'CTRL+m'>"));

    const auto session = portal.session;
    portal.activate(session, "toggle");
    EXPECT_TRUE(until([&] { return told.size() == 2; }));
    EXPECT_THAT(told, ElementsAre("token", "toggle"));
    portal.activate(session + "x", "toggle"); // of another program, or of before
    portal.activate(session, "other");
    support::PortalStandIn::emit(bus.connect(), session, "toggle",
                                 g_variant_new_parsed("@a{sv} {}")); // anybody
    hear();
    EXPECT_EQ(told.size(), 2U);

    portal.response = 1;
    EXPECT_EQ(reserve(*keys), Shortcut(std::unexpected("The desktop has not given these keys.")));
    portal.response = 0;
    portal.activate(session, "toggle");
    EXPECT_TRUE(until([&] { return told.size() == 4; })) << "what was reserved before stays";
    told.clear();
  }
}

TEST_F(PortalTest, AnotherPortalIsAskedAnew) {
  std::optional<support::PortalStandIn> portal(std::in_place, bus);
  const auto keys = shortcuts();
  ASSERT_TRUE(until([&] { return *keys->isAvailable(); }));
  EXPECT_TRUE(reserve(*keys));
  const auto session = portal->session;
  portal.reset();
  EXPECT_TRUE(until([&] { return !*keys->isAvailable(); }));
  portal.emplace(bus);
  EXPECT_TRUE(until([&] { return *keys->isAvailable(); })) << "so that the keys are reserved again";
  portal->activate(session, "toggle");
  hear();
  EXPECT_TRUE(told.empty());
  EXPECT_TRUE(reserve(*keys));
  portal->activate(portal->session, "toggle");
  EXPECT_TRUE(until([&] { return told.size() == 2; }));
}

TEST_F(PortalTest, TheStartAtLoginIsAsTheDesktopSays) {
  support::FakeDefaults defaults;
  BackgroundPortal background(defaults, {"ondrel", "--background"}, connector());
  using Answer = std::expected<void, std::string>;
  EXPECT_FALSE(result(background.setEnabled(true)).value_or(Answer()).has_value()) << "there is no portal";
  support::PortalStandIn portal(bus);
  EXPECT_TRUE(result(background.setEnabled(true)).value_or(std::unexpected("")));
  EXPECT_THAT(portal.calls.back(), HasSubstr("'commandline': <['ondrel', '--background']>"));
  EXPECT_TRUE(background.isEnabled());
  EXPECT_TRUE(result(background.setEnabled(false)).value_or(std::unexpected("")));
  EXPECT_FALSE(background.isEnabled());
  portal.grantsAutostart = false;
  EXPECT_FALSE(result(background.setEnabled(true)).value_or(Answer()).has_value());
  EXPECT_FALSE(background.isEnabled());
  background.setStatus("Watching");
  EXPECT_TRUE(until([&] { return portal.calls.back().starts_with("SetStatus"); }));
  EXPECT_THAT(portal.calls.back(), HasSubstr("'message': <'Watching'>"));
}

} // namespace
} // namespace ondrel::platform::portal
