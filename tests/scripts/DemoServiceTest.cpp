// Scripts in the web application of the demonstration service, with the main list that the program injects.
#include "ScriptTest.h"

#include "demo/Service.h"
#include "platform/linux/ResourceText.h"
#include "scripts/PageScriptSource.h"
#include "web/WebViewConfiguration.h"

namespace ondrel::tests {

class DemoServiceTest : public ScriptTest {
 protected:
  void SetUp() override {
    ScriptTest::SetUp();
    const auto listening = service_.listen(0, 0);
    ASSERT_TRUE(listening) << listening.error();
    Scripts scripts{injected("prelude.js")};
    const web::PageScripts all(scripts::pageScriptSource(resourceText));
    std::ranges::copy(all.mainConfiguration()->userScripts, std::back_inserter(scripts));
    useScripts(std::move(scripts));
    loadUrl(url("/mail/Inbox/?u=demo"));
    evaluate("$('#sign-in').click(); 0");
    ASSERT_TRUE(waitForEvent("finish", 2));
  }

  std::string url(const std::string& path) const {
    return "http://localhost:" + std::to_string(service_.webPort()) + path;
  }
  void open(const std::string& path, const std::string& preferences) {
    evaluate("Object.assign(localStorage, " + preferences + "); 0");
    loadUrl(url(path));
  }
  // The body of an async function; `until(condition)` moves the page's clock while the service answers.
  void runBody(const std::string& body) {
    runInPage(R"(run(async () => {
      const until = async (condition) => {
        for (let i = 0; !condition() && i < 400; ++i) {
          await fetch('/');  // real time passes
          await advance(50);
        }
        same(Boolean(condition()), true, condition);
      };)" + body +
                  "})",
              body);
  }

  demo::Service service_;
};

TEST_F(DemoServiceTest, ReplyQuotesTheSelection) {
  const std::string selectAndReply = R"(
    await until(() => $('.v-Message-body p'));
    getSelection().selectAllChildren($('.v-MessageCard.is-focused .v-Message-body p') ?? $('.v-Message-body p'));
    await new Promise((done) => requestAnimationFrame(done));
    await advance(150);)";
  open("/mail/Inbox/T1.M3?u=demo", "{composeFormat: 'rich', messageView: 'conversation'}");
  runBody(selectAndReply + R"(
    $('.is-focused .s-reply').click();
    await until(() => $('blockquote')?.childNodes.length === 1);
    await advance(1000);
    const text = $('.v-RichText-input').innerText;
    same([text.includes('steps.\n'), text.includes('One question is left')], [true, false], text);
    same($('blockquote').nextSibling.className, 'v-Signature');)");

  open("/mail/Inbox/T1.M3?u=demo", "{composeFormat: 'plain', messageView: 'single'}");
  runBody(selectAndReply + R"(
    same([$$('.v-MessageCard').length, $('.v-MessageCard.is-focused')], [1, null]);
    key('a');
    await until(() => $('textarea'));
    await advance(1000);
    const {value} = $('textarea');
    for (const part of ['wrote:\n> Tools are no trouble. I can bring the planes and both lathes in the\n> van,',
                        'steps.\n\n-- \nRobin']) {
      same(value.includes(part), true, value);
    }
    same(value.includes('question'), false, value);)");
}

TEST_F(DemoServiceTest, LargeFileBecomesALink) {
  for (const char* format : {"rich", "plain"}) {
    open("/mail/Inbox/compose?u=demo", std::string("{composeFormat: '") + format + "'}");
    runBody(R"(
      await until(() => $('#compose'));
      const dataTransfer = new DataTransfer();
      dataTransfer.items.add(new File([new Uint8Array(5000001)], 'large "1".bin'));
      $('#compose').dispatchEvent(new DragEvent('drop', {bubbles: true, cancelable: true, dataTransfer}));
      await settle();
      $('.u-modal button').click();
      await until(() => record.includes('ondrelFilesAutoShare: success, large "1".bin, '));
      same($('.v-ComposeAttachment-label').href.startsWith('http://usercontent.localhost:'), true);
      const text = $('textarea')?.value ?? $('.v-RichText-input').innerText;
      same(text.includes('Shared via Fastmail Files: large "1".bin'), true, text);)");
  }
}

TEST_F(DemoServiceTest, HighlightsComeBack) {
  open("/mail/Inbox/T1.M3?u=demo", "{messageView: 'conversation'}");
  runBody(R"(
    const reports = () => record.filter((line) => line.startsWith('ondrelHighlightContainersChanged'));
    await until(() => record.includes('ondrelHighlightHostReady') && record.includes('ondrelMailboxMarkersReady'));
    const focused = () => $$('.v-Message-body').findIndex((body) => body.closest('.is-focused'));
    await until(() => reports().at(-1)?.endsWith(`: ${$$('.v-Message-body').length}, ${focused()}`));
    const index = focused();
    const body = () => $$('.v-Message-body')[index];
    getSelection().selectAllChildren(body().querySelector('p'));
    await new Promise((done) => requestAnimationFrame(done));
    await advance(150);
    $$('body > div').find((div) => div.textContent === 'Highlight')
        .dispatchEvent(new MouseEvent('mousedown', {bubbles: true}));
    const [, json, at] = /^ondrelHighlightCreate: (.*), (\d+)$/s.exec(record.findLast((line) => line.startsWith(
        'ondrelHighlightCreate')));
    const text = body().querySelector('p').textContent;
    same([Number(at), JSON.parse(json).exact], [index, text]);

    // Collapsed and opened again.
    const header = $('.is-focused .v-MessageCard-header');
    header.click();
    await until(() => !$('mark'));
    header.click();
    await until(() => $$('mark').map((mark) => mark.textContent).join('') === text);

    window.__ondrelApplyMailboxHighlightMarks(['T1', 'T2']);
    same($$('li [data-ondrel-mark]').length, 2);)");
}

} // namespace ondrel::tests
