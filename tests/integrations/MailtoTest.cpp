#include "base/Url.h"
#include "integrations/MailtoDraft.h"
#include "integrations/MailtoHandler.h"
#include "support/TestShell.h"
#include "web/page/PageNotice.h"

#include <gtest/gtest.h>

namespace ondrel::integrations {
namespace {

constexpr const char* base = "https://app.example.com/";
const std::string compose = "https://app.example.com/mail/compose";

TEST(MailtoDraft, BecomesTheAddressOfTheEditor) {
  const std::pair<std::string, const char*> cases[] = {
      {"mailto:", ""},
      {"mailto:a@b.example", "?to=a@b.example"},
      {"mailto:a@b,c%40d?SUBJECT=x%20y&body=one%0D%0Atwo&cc=e@f&bcc=g@h",
       "?to=a@b,c@d&subject=x%20y&body=one%0D%0Atwo&cc=e@f&bcc=g@h"},
      {"mailto:a@b?to=c@d", "?to=c@d"},
      {"mailto:a@b?to=", ""},
      {"mailto:a@b?to", "?to=a@b"},
      {"mailto:a%2540b", "?to=a%2540b"},       // decoded once
      {"mailto:a%zz%20b", "?to=a%25zz%2520b"}, // a broken escape leaves all of it
      {"mailto:?subject&subject=late", ""},
      {"mailto:?subject=&body=", "?subject=&body="},
      {"mailto:?subject=1+1&subject=2", "?subject=1%2B1"},
      {"mailto:?subject=50%&body=%E9", "?subject=50%25&body=%25E9"}, // what is no text is left as it is
      {"mailto:a@b?attach=/etc/passwd&attachment=x&from=x&in-reply-to=y&x", "?to=a@b"},
      {"mailto:a@b%0D%0ABcc:c@d?subject=x%0D%0A%09y%00", "?to=a@b%20Bcc:c@d&subject=x%20y"},
      {"mailto:%00?body=%1B[2J%09x%C2%9B", "?body=%5B2J%09x"},
      {"mailto:a@b#f?subject=x", "?to=a@b%23f"},
      {"mailto:a@b?subject=x#f&body=y", "?to=a@b&subject=x"},
      {"\xFF:\xFF?body=\xFF", "?body="},
      {"", ""}};
  for (const auto& [url, query] : cases)
    EXPECT_EQ(composeURL(base, MailtoDraft(url), {}), compose + query) << url;
  EXPECT_EQ(composeURL(base, MailtoDraft("mailto:a@b"), "u1"), compose + "?u=u1&to=a@b");
}

TEST(MailtoDraft, IsCutWhereNothingIsCutInTwo) {
  const auto cut = [](const std::string& url, std::size_t bytes) {
    MailtoDraft draft(url);
    const auto whole = draft.shortenTo(bytes);
    return whole + "|" + composeURL("", draft, {}).substr(12);
  };
  EXPECT_EQ(cut("mailto:a@b?body=one%20two", 18), "one two|?to=a@b&body=one") << "three bytes for the space";
  EXPECT_EQ(cut("mailto:?body=x\u00e9\u00e9", 17), "x\u00e9\u00e9|?body=x%C3%A9");
  EXPECT_EQ(cut("mailto:aa@b,cc@d,ee@f?body=text", 15), "aa@b,cc@d,ee@f\n\ntext|?to=aa@b,cc@d&body=");
}

class MailtoHandlerTest : public testing::Test {
 protected:
  void open(const std::string& url) {
    handler.handle(*base::Url::parse(url));
    shell.loop.advance(std::chrono::seconds(1));
  }
  auto model(std::size_t number) {
    return shell.manager->windows().viewModel(shell.application.all.at(number));
  }

  support::TestShell shell;
  MailtoHandler handler{shell.application, (shell.start(), *shell.manager), shell.settings, shell.clipboard};
};

TEST_F(MailtoHandlerTest, OpensEachLetterBesideTheOthers) {
  model(0)->show("https://beta.example.com/mail/Inbox/?u=1");
  open("mailto:one@x?subject=Hi");
  EXPECT_EQ(shell.webView(model(0))->loads.back(), compose + "?u=1&to=one@x&subject=Hi");
  EXPECT_EQ(shell.application.activations, 1);
  EXPECT_EQ(shell.log.count("info network: mailto received — to: one@x, subject: Hi"), 1);
  open("mailto:two@x");
  open("MAILTO:three@x");
  ASSERT_EQ(shell.application.all.size(), 2U);
  EXPECT_EQ(*model(1)->urlString, compose + "?u=1&to=two@x");
}

TEST_F(MailtoHandlerTest, OfManyAtOnceOnlyTheFirstIsLoaded) {
  model(0)->show("https://app.example.com/mail/Inbox/");
  const auto views = shell.webViews.made.size();
  for (const auto* url : {"mailto:1@x", "mailto:2@x", "mailto:3@x"})
    handler.handle(*base::Url::parse(url));
  shell.settle();
  EXPECT_EQ(shell.webViews.made.size(), views);
  EXPECT_EQ(shell.application.key, shell.application.all[0]);
  std::string letters;
  for (const auto& window : shell.application.all[0]->group->windows())
    letters += shell.manager->windows().viewModel(window)->urlString->substr(compose.size());
  EXPECT_EQ(letters, "?to=1@x?to=2@x?to=3@x");
}

// The fake engine goes back to the address of the page that is shown, as the real one does.
TEST_F(MailtoHandlerTest, AnEditorThatCouldNotBeLoadedStaysOnOffer) {
  model(0)->show("https://app.example.com/mail/Inbox/");
  shell.webView(model(0))->commit();
  open("mailto:one@x");
  shell.webView(model(0))->failProvisional({.code = -1, .description = "no network"});
  open("mailto:two@x");
  EXPECT_EQ(model(0)->pageProblem->url, compose + "?to=one@x");
  EXPECT_EQ(*model(1)->urlString, compose + "?to=two@x");
}

TEST_F(MailtoHandlerTest, TakesTheAccountOfTheWindowInFrontAndOfTheServiceOnly) {
  model(0)->urlString.set("https://evil.example/mail/?u=evil");
  shell.manager->addresses().openInNewTabOrWindow("https://app.example.com/mail/Inbox/?u=1");
  shell.manager->addresses().openInNewTabOrWindow("https://app.example.com/mail/Inbox/?u=2");
  open("mailto:a@x");
  EXPECT_EQ(*model(2)->urlString, compose + "?u=2&to=a@x");
  shell.application.setKey(shell.application.all[0]);
  open("mailto:b@x");
  EXPECT_TRUE(model(0)->urlString->starts_with(compose + "?u=1"));
}

TEST_F(MailtoHandlerTest, OffersWhatDidNotFit) {
  const auto watching = model(0)->noticed.subscribe([](const web::PageNotice& notice) { notice.act(); });
  const std::string text(1 << 20, 'x');
  open("mailto:a@x?body=" + text);
  EXPECT_EQ(model(0)->urlString->size(), 8000U);
  EXPECT_EQ(shell.clipboard.text, text);
}

TEST_F(MailtoHandlerTest, ALetterBehindKeepsItsOfferUntilItIsSeen) {
  const auto watching = model(0)->noticed.subscribe([](const web::PageNotice& notice) { notice.act(); });
  const std::string text(10'000, 'x');
  handler.handle(*base::Url::parse("mailto:1@x"));
  handler.handle(*base::Url::parse("mailto:2@x?body=" + text));
  EXPECT_FALSE(model(0)->pendingNotice);
  ASSERT_TRUE(model(1)->pendingNotice);
  EXPECT_EQ(model(1)->pendingNotice->button, "Copy All");
  model(1)->pendingNotice->act();
  EXPECT_EQ(shell.clipboard.text, text);
}

} // namespace
} // namespace ondrel::integrations
