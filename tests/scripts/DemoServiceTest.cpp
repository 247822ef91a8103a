// Scripts in the web application of the demonstration service, with the main list that the program injects.
#include "ScriptTest.h"

#include "demo/Service.h"

namespace ondrel::tests {

class DemoServiceTest : public ScriptTest {
 protected:
  void SetUp() override {
    ScriptTest::SetUp();
    // The application keeps its user at a letter.
    delegate_.onBeforeUnload = [](platform::DoneReply reply) { std::move(reply)(true); };
    const auto listening = service_.listen(0, 0);
    ASSERT_TRUE(listening) << listening.error();
    Scripts scripts{injected("prelude.js")};
    std::ranges::copy(mainPageScripts(), std::back_inserter(scripts));
    useScripts(std::move(scripts));
    loadUrl(url("/mail/Inbox/?u=demo"));
    evaluate("$('#sign-in').click(); 0");
    ASSERT_TRUE(waitForEvent("finish", 2));
  }

  std::string url(const std::string& path) const {
    return "http://localhost:" + std::to_string(service_.webPort()) + path;
  }
  // Runs the body of an async function in that page.
  void runOn(const std::string& path, const std::string& preferences, const std::string& body) {
    evaluate("Object.assign(localStorage, " + preferences + "); 0");
    loadUrl(url(path));
    runInPage("run(async () => {" + body + "})", body);
  }

  demo::Service service_;
};

TEST_F(DemoServiceTest, ReplyQuotesTheSelection) {
  const std::string select = R"(
    await until(() => $('.v-Message-body p'));
    getSelection().selectAllChildren($('.v-MessageCard.is-focused .v-Message-body p') ?? $('.v-Message-body p'));
    await painted();
    await advance(150);)";
  const std::string page = "/mail/Inbox/T1.M3?u=demo";
  runOn(page, "{composeFormat: 'rich', messageView: 'conversation'}", select + R"(
    $('.is-focused .s-reply').click();
    await until(() => $('blockquote')?.childNodes.length === 1);
    await advance(1000);
    const text = $('.v-RichText-input').innerText;
    same([text.includes('steps.\n'), text.includes('One question is left')], [true, false], text);
    same($('blockquote').nextSibling.className, 'v-Signature');)");
  runOn(page, "{composeFormat: 'plain', messageView: 'single'}", select + R"(
    same([$$('.v-MessageCard').length, $('.v-MessageCard.is-focused')], [1, null]);
    key('a');
    await until(() => $('textarea'));
    await advance(1000);
    const {value} = $('textarea');
    const parts = ['wrote:\n> Tools are no trouble. I can bring the planes and both lathes in the\n> van,',
                   'steps.\n\n-- \nRobin', 'question'];
    same(parts.map((part) => value.includes(part)), [true, true, false], value);)");
}

TEST_F(DemoServiceTest, LargeFileBecomesALink) {
  for (const char* format : {"rich", "plain"}) {
    runOn("/mail/Inbox/compose?u=demo", std::string("{composeFormat: '") + format + "'}", R"(
      await until(() => $('#compose'));
      const dataTransfer = new DataTransfer();
      dataTransfer.items.add(new File([new Uint8Array(5000001)], 'large "1".bin'));
      press($('#compose'), 'drop', {dataTransfer}, DragEvent);
      await settle();
      $('.u-modal button').click();
      await until(() => record.includes('ondrelFilesAutoShare: success, large "1".bin, '));
      same($('.v-ComposeAttachment-label').href.startsWith('http://usercontent.localhost:'), true);
      const text = $('textarea')?.value ?? $('.v-RichText-input').innerText;
      same(text.includes('Shared via Fastmail Files: large "1".bin'), true, text);)");
  }
}

} // namespace ondrel::tests
