#include "base/Json.h"
#include "integrations/EmailLinkService.h"
#include "integrations/GetAddressCommand.h"
#include "support/FakeJMAPClient.h"
#include "support/FakeScripting.h"
#include "support/TestShell.h"
#include "web/page/PageNotice.h"

#include <gtest/gtest.h>

namespace ondrel::integrations {
namespace {

using namespace std::chrono_literals;
using support::FakeJMAPClient;

const std::string inbox = "https://app.example.com/mail/Inbox/";

class EmailLinkTest : public testing::Test {
 protected:
  EmailLinkTest() {
    tab->show(inbox);
    page().commit();
    page().answer = [](const std::string&) { return boost::json::value("M1"); };
    shell.settle();
  }
  support::FakeWebView& page() { return *shell.webView(tab); }
  void open(const std::string& messageId) { scope.spawn(links.openEmail(messageId)); }
  void answerWith(const std::string& messageId) {
    client.answer("Email/query", FakeJMAPClient::reply({"{}", R"({"list":[{"id":"M1","messageId":[")" +
                                                                  messageId + R"("]}]})"}));
    client.answer("Email/get", FakeJMAPClient::reply({R"-({"list":[{"mailboxIds":{"b":true},"threadId":"T1",
                    "subject":"[Re] (x)","messageId":["m=1@x"]}]})-"}));
    client.answer("Mailbox/get", FakeJMAPClient::reply({R"({"list":[{"name":"Inbox"}]})"}));
  }
  std::string askedFor(std::size_t number) {
    return base::jsonText(client.sent.at(number).body.at("methodCalls").at(0).at(1).at("filter"));
  }

  support::TestShell shell;
  support::FakeJMAPClient client;
  jmap::MailQueries mail{client, shell.settings, [] {}};
  EmailLinkService links{{shell.application, (shell.start(), *shell.manager), shell.services, mail,
                          shell.notifications, shell.clipboard}};
  support::FakeScripting scripting;
  GetAddressCommand command{scripting, links, *shell.manager};
  std::shared_ptr<web::WindowViewModel> tab = shell.focusedModel();
  std::vector<std::string> notices;
  base::Subscription watching =
      tab->noticed.subscribe([this](const web::PageNotice& notice) { notices.push_back(notice.text); });
  async::Scope scope;
};

// Browsers and toolkits encode what a Message-ID may hold.
TEST_F(EmailLinkTest, LooksForTheLinkAsItStandsAndThenForWhatWasEncoded) {
  const auto asIs = "\"a b\"%40" + std::string(10000, 'x');
  answerWith("\\\"a b\\\"%40" + asIs.substr(8));
  open(asIs);
  shell.settle();
  EXPECT_EQ(page().loads.back(), inbox + "T1.M1?u=123");
  EXPECT_EQ(client.sent.size(), 3U);
  open("m%3D1@x");
  shell.settle();
  EXPECT_EQ(askedFor(3), R"({"header":["Message-ID","m%3D1@x"]})");
  EXPECT_EQ(askedFor(4), R"({"header":["Message-ID","m=1@x"]})");
}

TEST_F(EmailLinkTest, SaysWhereTheUserLooksWhatCouldNotBeOpened) {
  const auto loads = page().loads.size();
  answerWith("other@x");
  open("un\tknown@x");
  open(std::string(1 << 20, 'x'));
  shell.settle();
  EXPECT_EQ(client.sent.size(), 1U);
  EXPECT_EQ(notices, std::vector<std::string>(2, "There is no message for this link in your account."));
  EXPECT_EQ(shell.log.count("error system: Hookmark: failed to open email un known@x: Unexpected JMAP "
                            "response format."),
            1);
  EXPECT_EQ(page().loads.size(), loads);
  EXPECT_EQ(shell.application.activations, 0) << "the program stays where it was";

  EXPECT_TRUE(shell.notificationCenter.requests.empty());
  shell.application.key = nullptr; // the settings have the keyboard, say, in front of the tab
  open("a@x");
  shell.settle();
  EXPECT_EQ(notices.size(), 3U);
  EXPECT_EQ(shell.notificationCenter.requests.at(0).content.body, notices.back());
  shell.application.hidden = true;
  open("a@x");
  shell.settle();
  EXPECT_TRUE(notices.size() == 3 && shell.notificationCenter.requests.size() == 2);
}

TEST_F(EmailLinkTest, OfLinksThatAreAnsweredOutOfOrderTheLaterOneStays) {
  answerWith("a@x");
  client.delay = 5s;
  open("a@x");
  shell.loop.advance(1s);
  client.delay = 1s;
  open("a@x");
  shell.loop.advance(4s);
  const auto loads = page().loads.size();
  shell.loop.advance(30s);
  EXPECT_EQ(page().loads.size(), loads);
  EXPECT_EQ(shell.log.count("info system: Hookmark: email with messageId a@x came after a later one"), 1);
}

TEST_F(EmailLinkTest, CopiesTheAppleMailLinkOrSaysWhyNot) {
  answerWith("m=1@x");
  scope.spawn(links.copyAppleMailLink());
  shell.settle();
  EXPECT_EQ(shell.clipboard.text, "message://%3Cm=1@x%3E");
  EXPECT_EQ(shell.notificationCenter.requests.at(0).content.title, "Address copied");
  page().answer = nullptr;
  scope.spawn(links.copyAppleMailLink());
  shell.settle();
  EXPECT_EQ(shell.log.count("error system: copyAppleMailLink failed: No email is currently selected."), 1);
  EXPECT_EQ(notices, std::vector<std::string>{"The link was not copied: No email is currently selected."});
}

TEST_F(EmailLinkTest, LinkToolsGetTheAddressOneAtATime) {
  using Error = platform::ScriptCommandError;
  std::vector<std::optional<platform::ScriptCommandResult>> answers;
  const auto ask = [this, &answers] {
    const auto number = answers.size();
    answers.emplace_back();
    scripting.handler({[&answers, number](auto result) { answers[number] = std::move(result); }, ""});
    shell.settle();
    return answers[number];
  };
  answerWith("m=1@x");
  EXPECT_EQ(ask(), "") << "none of the tools runs";
  scripting.running = {"org.velmora.linker"};
  EXPECT_EQ(ask(), "[[Re] (x)](email://m=1@x)");

  client.delay = 5s;
  EXPECT_FALSE(ask());
  EXPECT_EQ(ask(), "") << "a second one doesn't wait";
  shell.loop.advance(5s);
  EXPECT_EQ(answers[2], "[[Re] (x)](email://m=1@x)");

  page().answer = nullptr;
  EXPECT_EQ(ask(), std::unexpected(Error{-1750, "No email is currently selected."}));
  shell.application.main = shell.application.key;
  shell.application.key = nullptr;
  EXPECT_EQ(ask(), std::unexpected(Error{-1750, "No active browser tab."}));
  tab->urlString.set("https://app.example.com/settings/");
  EXPECT_EQ(ask(), "");
}

} // namespace
} // namespace ondrel::integrations
