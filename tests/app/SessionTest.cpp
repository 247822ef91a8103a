#include "app/PersistedSession.h"
#include "app/SessionLimits.h"
#include "app/SessionStore.h"
#include "async/VirtualEventLoop.h"
#include "support/FakeDesktop.h"
#include "support/LogCapture.h"

#include <gtest/gtest.h>

namespace ondrel::app {
namespace {

PersistedSession sample() {
  PersistedTab first{"https://app.example.com/mail/", "Inbox \"x\"\n", base::Bytes{0, 255, 7}, 1.1, true};
  PersistedTab second{"", "", std::nullopt, 1.0, false};
  return {{{{first, second}, PersistedFrame{-10.5, 0, 870, 768}}, {{second}, std::nullopt}}};
}

TEST(PersistedSession, SurvivesItsFile) {
  const auto text = sample().encoded();
  EXPECT_EQ(PersistedSession::decode(text), sample());
  EXPECT_TRUE(text.contains(R"("interactionState":"AP8H")")) << text;
  EXPECT_TRUE(text.contains(R"("pageZoom":1.1,)")) << text;
  EXPECT_EQ(text.find("\"frame\""), text.rfind("\"frame\"")) << "an absent frame leaves its key out";
  EXPECT_EQ(PersistedSession{}.encoded(), R"({"windows":[]})");
}

TEST(PersistedSession, IsBounded) {
  const auto tab = [](std::size_t state) { return PersistedTab{"u", "t", base::Bytes(state), 1.0, true}; };
  PersistedSession session{{{{tab(largestTabState), tab(largestTabState + 1)}, {}}, {{}, {}}}};
  session.windows[1].tabs.assign(20, tab(largestTabState));
  session.windows[1].tabs.push_back({"https://x.example:8/" + std::string(1 << 20, 'a'),
                                     std::string(1023, 't') + "\xC3\xA9", base::Bytes{1}, 1.0, true});
  limitSize(session);
  EXPECT_EQ(session.windows[0].tabs[0], tab(largestTabState));
  EXPECT_EQ(session.windows[0].tabs[1].interactionState, std::nullopt);
  std::size_t kept = 0;
  for (const auto& window : session.windows)
    for (const auto& each : window.tabs)
      kept += each.interactionState.value_or(base::Bytes()).size();
  EXPECT_EQ(kept, largestSessionStates);
  EXPECT_EQ(session.windows[1].tabs.back(),
            (PersistedTab{"https://x.example:8/", std::string(1023, 't'), std::nullopt, 1.0, true}));
}

TEST(PersistedSession, IsReadWholeOrNotAtAll) {
  const std::string tab = R"("urlString":"u","title":"t","pageZoom":1,"toolbarVisible":true)";
  const auto window = [](const std::string& content) {
    return R"({"windows":[{"tabs":[{)" + content + "}]}]}";
  };
  const std::pair<std::string, bool> cases[] = {
      {R"({"windows":[]})", true},
      {R"({"windows":[{"tabs":[]}]})", true},
      {R"({"windows":[],"later":{"x":1}})", true},
      {window(tab), true},
      {window(tab + R"(,"interactionState":null)"), true},
      {window(tab + R"(,"interactionState":"not base64")"), false},
      {window(R"("urlString":"u","title":"t","toolbarVisible":true)"), false},
      {R"({"windows":[{"tabs":[],"frame":{"x":1,"y":2,"width":3}}]})", false},
      {R"({"windows":[{"tabs":[],"frame":{"x":1,"y":2,"width":3,"height":1e3}}]})", true},
      {"[]", false},
      {"", false},
      {R"({"windows":[{"ta)", false},
      {std::string(100000, '['), false},
      {"{\"windows\":\xFF}", false},
  };
  for (const auto& [text, good] : cases)
    EXPECT_EQ(PersistedSession::decode(text).has_value(), good) << text.substr(0, 200);
}

class SessionStoreTest : public testing::Test {
 protected:
  static constexpr auto path = "/data/session.json";
  support::LogCapture log;
  async::VirtualEventLoop loop;
  support::FakeFiles files;
  SessionStore store{files, files};
};

TEST_F(SessionStoreTest, WritesAndReadsItsFile) {
  EXPECT_EQ(store.load(), std::nullopt);
  EXPECT_TRUE(log.lines().empty()) << "a first start is nothing to speak of";
  store.save(sample());
  EXPECT_EQ(store.load(), sample());
}

TEST_F(SessionStoreTest, TheLastCopyToSaveWinsAndNothingElseIsLost) {
  store.save(sample());
  files.files[path] = R"({"windows":[]})";
  store.save(sample());
  EXPECT_EQ(files.files.size(), 1U) << "the other copy's is not set aside";
  files.files[path] = "{\"windows\"";
  EXPECT_EQ(store.load(), std::nullopt);
  EXPECT_TRUE(log.anyStartsWith("error system: SessionStore: decode failed: "));
  store.save(sample());
  EXPECT_EQ(store.load(), sample());
  EXPECT_EQ(files.files["/data/session.json.damaged-1"], "{\"windows\"");
}

} // namespace
} // namespace ondrel::app
