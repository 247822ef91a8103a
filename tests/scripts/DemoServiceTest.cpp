// The scripts in the web application of the demonstration service, with the lists that the program injects.
#include "ScriptTest.h"
#include "demo/Service.h"

namespace ondrel::tests {

class DemoServiceTest : public ScriptTest {
 protected:
  void SetUp() override {
    ScriptTest::SetUp();
    const auto listening = service_.listen(0, 0);
    ASSERT_TRUE(listening) << listening.error();
  }

  // Shows a page of the application, signed in, with the scripts of the main or the compose list.
  void openApplication(const std::string& path, bool isCompose = false) {
    useScripts(withPrelude(isCompose));
    loadUrl(url(path));
    if (value("$('#sign-in') !== null") == "true") {
      const auto finished = delegate_.count("finish");
      evaluate("$('#sign-in').click(); 0");
      ASSERT_TRUE(waitForEvent("finish", finished + 1));
      loadUrl(url(path));
    }
  }
  std::string url(const std::string& path) const {
    return "http://localhost:" + std::to_string(service_.webPort()) + path;
  }
  // Moves the page's clock in small steps until the condition holds: what the page asks of the service takes
  // real time meanwhile.
  bool advanceUntil(const std::function<bool()>& condition) {
    for (int step = 0; step < 400 && !HasFatalFailure(); ++step) {
      if (condition())
        return true;
      run("await advance(50)");
      runFor(5ms);
    }
    return false;
  }
  void until(const std::string& expression) {
    ASSERT_TRUE(advanceUntil([&] { return value("Boolean(" + expression + ")") == "true"; })) << expression;
  }
  void expectPost(const std::string& expected) {
    std::vector<std::string> all;
    const auto isThere = [&] {
      for (auto& post : posts())
        all.push_back(std::move(post));
      return std::ranges::find(all, expected) != all.end();
    };
    EXPECT_TRUE(advanceUntil(isThere)) << expected << " is missing in " << testing::PrintToString(all);
  }

  demo::Service service_;
};

TEST_F(DemoServiceTest, NewMessageIsAskedForAndReduced) {
  openApplication("/mail/Inbox/?u=demo");
  until("window.FastMail");
  run("await advance(2000)");
  expectPost("composeReady");
  const auto asked = "compose: " + url("/mail/compose?u=demo&ui=minimal");
  evaluate("composeInWindow = true;");
  run("key('c', document.body, {code: 'KeyC'})");
  expectPost(asked);
  posts();
  run("$('.s-compose').click()");
  expectPost(asked);
  EXPECT_EQ(value("$('.v-Compose')"), "null");
}

TEST_F(DemoServiceTest, ComposeWindowTellsOfSendingAndDiscarding) {
  openApplication("/mail/Inbox/compose?u=demo&ui=minimal", true);
  until("$('#compose')");
  EXPECT_EQ(value("[document.body.children.length, $('.i-close')]"), "[1,null]");
  run("$('.s-discard').click(); await settle()");
  expectPost("discardClicked");
  run("$('.v-Notification-action').click()");
  expectPost("discardUndone");
  // By the keyboard: only the dialog tells.
  run("$('[name=to]').value = 'a@b.example'; $('[name=subject]').value = 'S';"
      "$('#compose').dispatchEvent(new Event('input')); key('Enter', $('[name=subject]'), {ctrlKey: true});");
  expectPost("sendClicked");
  until("document.body.textContent.includes('Message sent')");
}

TEST_F(DemoServiceTest, ReplyQuotesTheSelection) {
  const std::string selectAndReply =
      "const p = $('.v-MessageCard.is-focused .v-Message-body p') ?? $('.v-Message-body p');"
      "getSelection().selectAllChildren(p); await new Promise((done) => requestAnimationFrame(done)); await "
      "advance(150);";
  const auto openMessage = [&](const std::string& format, const std::string& view) {
    evaluate("localStorage.composeFormat = '" + format + "'; localStorage.messageView = '" + view + "'; 0");
    openApplication("/mail/Inbox/T1.M3?u=demo");
    until("$('.v-Message-body p')");
  };
  openApplication("/mail/Inbox/?u=demo");

  openMessage("rich", "conversation");
  run(selectAndReply + "$('.is-focused .s-reply').click()");
  until("$('blockquote')?.childNodes.length === 1");
  EXPECT_THAT(value("$('.v-RichText-input').innerText"), HasSubstr("steps.\\n"));
  run("await advance(1000)");
  EXPECT_THAT(value("$('.v-RichText-input').innerText"), Not(HasSubstr("One question is left")));
  EXPECT_EQ(value("$('blockquote').nextSibling.className"), "\"v-Signature\"");

  openMessage("plain", "single");
  EXPECT_EQ(value("[document.querySelectorAll('.v-MessageCard').length, $('.is-focused.v-MessageCard')]"),
            "[1,null]");
  run(selectAndReply + "key('a')");
  until("$('textarea')");
  run("await advance(1000)");
  EXPECT_THAT(
      value("$('textarea').value"),
      AllOf(HasSubstr(
                "wrote:\\n> Tools are no trouble. I can bring the planes and both lathes in the\\n> van,"),
            HasSubstr("steps.\\n\\n-- \\nRobin"), Not(HasSubstr("question"))));
}

TEST_F(DemoServiceTest, LargeFileBecomesALink) {
  openApplication("/mail/Inbox/?u=demo");
  const std::string attach = "const data = new DataTransfer(); data.items.add(new File([new "
                             "Uint8Array(5000001)], 'large \"1\".bin'));"
                             "$('#compose').dispatchEvent(new DragEvent('drop', {bubbles: true, cancelable: "
                             "true, dataTransfer: data}));"
                             "await settle();";
  for (const char* format : {"rich", "plain"}) {
    evaluate(std::string("localStorage.composeFormat = '") + format + "'; 0");
    openApplication("/mail/Inbox/compose?u=demo");
    until("$('#compose')");
    run(attach + "$('.u-modal button').click()");
    expectPost("ondrelFilesAutoShare: success, large \"1\".bin, ");
    EXPECT_EQ(value("$('.v-ComposeAttachment-label').href.startsWith('http://usercontent.localhost:')"),
              "true");
    EXPECT_THAT(value("$('textarea')?.value ?? $('.v-RichText-input').innerText"),
                HasSubstr("Shared via Fastmail Files: large \\\"1\\\".bin"));
  }
}

} // namespace ondrel::tests
