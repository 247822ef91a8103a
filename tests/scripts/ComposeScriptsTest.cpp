// The scripts that give composing a window of its own.
#include "ScriptTest.h"

namespace ondrel::tests {

class ComposeHookTest : public ScriptTest {
 protected:
  // The application's actions, called within an event as the application does it; what it opened itself is in
  // `opened`.
  static constexpr const char* application = R"(<a id=compose href='/mail/Inbox/compose?u=1'>Compose</a>
    <button id=reply>Reply</button><div class=s-send><b id=send>Send</b></div><script>
    var opened = [];
    var FastMail = {router: {appController: {
      goCompose(...args) { opened.push(['compose', this === FastMail.router.appController, ...args]) },
      goNewCompose(...args) { opened.push(['new', this === FastMail.router.appController, ...args]) }}}};
    const act = (name, ...args) => FastMail.router.appController[name](...args);
    document.addEventListener('keydown', () => act('goCompose', 1, 2));
    compose.addEventListener('click', (event) => { event.preventDefault(); act('goNewCompose', 3) });
    reply.addEventListener('click', () => act('goNewCompose', 4));
    reply.addEventListener('pointerdown', () => act('goCompose', 5));
    </script>)";

  void openAt(const std::string& path) {
    useScripts({prelude(), pageScript("composePresetScript"), pageScript("composeHookScript")});
    server_.serve(path.substr(0, path.find_first_of("?#")), application);
    loadUrl(server_.url(path));
  }
};

TEST_F(ComposeHookTest, WaitsForTheApplicationToStart) {
  openAt("/mail/Inbox/T1.M4?u=1");
  run("await advance(1999); key('c', document.body, {code: 'KeyC', shiftKey: true})");
  EXPECT_EQ(value("opened.splice(0)"), R"([["compose",true,1,2]])");
  EXPECT_THAT(posts(), IsEmpty());
  run("await advance(1); key('c', document.body, {code: 'KeyC', shiftKey: true})");
  EXPECT_EQ(value("opened"), "[]");
  EXPECT_THAT(posts(),
              ElementsAre("composeReady", "compose: " + server_.url("/mail/Inbox/compose?u=1&ui=minimal")));
}

TEST_F(ComposeHookTest, OpensAWindowOnlyForANewMessage) {
  openAt("/mail/Inbox/?u=1");
  run("await advance(2000)");
  EXPECT_THAT(posts(), ElementsAre("composeReady"));
  const auto window = "compose: " + server_.url("/mail/compose?u=1&ui=minimal");
  const auto click = [](const char* target, const char* more) {
    return std::string("$('") + target +
           "').dispatchEvent(new PointerEvent('click', {bubbles: true, cancelable: true" + more + "}))";
  };
  // The variable is the program's to set, by plain assignment.
  const struct {
    const char* composeInWindow;
    std::string act;
    bool opensWindow;
    std::string original;
  } table[] = {
      {"false", "key('c', document.body, {code: 'KeyC'})", false, R"([["compose",true,1,2]])"},
      {"false", "key('C', document.body, {code: 'KeyC', shiftKey: true})", true, "[]"},
      {"false", "key('x', document.body, {code: 'KeyX', shiftKey: true})", false,
       R"([["compose",true,1,2]])"},
      {"true", "key('c', document.body, {code: 'KeyC'})", true, "[]"},
      {"true", "key('x', document.body, {code: 'KeyX'})", false, R"([["compose",true,1,2]])"},
      {"true", "reply.dispatchEvent(new PointerEvent('pointerdown'))", true, "[]"},
      {"false", "reply.dispatchEvent(new PointerEvent('pointerdown'))", false, R"([["compose",true,5]])"},
      {"true", "reply.dispatchEvent(new MouseEvent('pointerdown'))", false, R"([["compose",true,5]])"},
      {"false", click("#compose", ""), false, R"([["new",true,3]])"},
      {"false", click("#compose", ", shiftKey: true"), true, "[]"},
      {"true", click("#compose", ""), true, "[]"},
      {"true", click("#reply", ""), false, R"([["new",true,4]])"},
      {"true", "compose.href = '/contacts/compose';" + click("#compose", ""), false, R"([["new",true,3]])"},
      {"true", "compose.href = '/mail/settings';" + click("#compose", ""), false, R"([["new",true,3]])"},
  };
  for (const auto& [composeInWindow, act, opensWindow, original] : table) {
    EXPECT_TRUE(evaluate(std::string("composeInWindow = ") + composeInWindow + ";"));
    run(act);
    const auto where = std::string(composeInWindow) + " " + act;
    EXPECT_EQ(posts(), opensWindow ? std::vector<std::string>{window} : std::vector<std::string>{}) << where;
    EXPECT_EQ(value("opened.splice(0)"), original) << where;
  }
  // Outside of any event it isn't the user who asks.
  for (const char* composeInWindow : {"true", "false"}) {
    evaluate(std::string("composeInWindow = ") + composeInWindow +
             "; act('goCompose', 6); act('goNewCompose', 7); 0");
    EXPECT_EQ(value("[opened.splice(0), typeof event]"),
              R"([[["compose",true,6],["new",true,7]],"undefined"])");
  }
  EXPECT_THAT(posts(), IsEmpty());
}

TEST_F(ComposeHookTest, AddressIsThatOfTheMomentOfTheHook) {
  const struct {
    std::string path;
    std::string address;
  } table[] = {
      {"/mail/Inbox/T1.M4?u=1#part", server_.url("/mail/Inbox/compose?u=1#part&ui=minimal")},
      {"/mail//Plans//", server_.url("/mail/compose&ui=minimal")},
      {"/", "&ui=minimal"},
  };
  for (const auto& [path, address] : table) {
    openAt(path);
    run("await advance(2000); history.pushState(null, '', '/elsewhere/now');"
        "composeInWindow = true; key('c', document.body, {code: 'KeyC'})");
    EXPECT_THAT(posts(), ElementsAre("composeReady", "compose: " + address)) << path;
  }
  EXPECT_THAT(logs(), ElementsAre("Failed to transform URL: No path segments found"));
}

TEST_F(ComposeHookTest, PageWithoutTheApplicationKeepsQuiet) {
  useScripts({prelude(), pageScript("consoleRelayScript"), pageScript("composePresetScript"),
              pageScript("composeHookScript")});
  server_.serve("/frame", "<p>frame</p>");
  loadHtml("<iframe src='/frame'></iframe>");
  EXPECT_EQ(value("[composeInWindow, $('iframe').contentWindow.composeInWindow]"), "[false,false]");
  run("await advance(10000); await settle(); await settle()");
  EXPECT_THAT(posts(), ElementsAre(HasSubstr("[unhandledrejection] ReferenceError")));
}

TEST_F(ScriptTest, DiscardIsToldByTheToast) {
  open({"discardWatcherScript"}, "<p>compose</p>");
  const struct {
    const char* action;
    std::vector<std::string> expected;
  } table[] = {
      {"add('<p class=v-Notification-message> Discarded draft </p>')", {"discardClicked"}},
      {"add('<p class=v-Notification-message>Discarded 2 drafts</p>')", {"discardClicked"}},
      {"add('<div><div><p class=v-Notification-message>Discarded draft</p></div></div>')",
       {"discardClicked"}},
      {"for (const _ of [1, 2]) { add('<p class=v-Notification-message>Discarded draft</p>'); await settle() "
       "}",
       {"discardClicked", "discardClicked"}},
      {"add('<p class=v-Notification-message>Your draft is not Discarded</p>')", {}},
      {"add('<p class=v-Notification-message>Discarded changes</p>')", {}},
      {"add('<p>Discarded draft</p>'); document.body.append('Discarded draft', "
       "document.createComment('draft'))",
       {}},
      {"$('.v-Notification-message').textContent = 'Discarded draft'", {}},
      {"add('<div class=v-Notification-action><b id=undo>Undo</b></div>'); $('#undo').click()",
       {"discardUndone"}},
      {"document.body.click(); document.dispatchEvent(new MouseEvent('click'))", {}},
      {"$('#undo').onclick = (e) => e.stopPropagation(); $('#undo').click()", {"discardUndone"}},
  };
  for (const auto& [action, expected] : table) {
    run(std::string("const add = (html) => document.body.append(element(html));") + action +
        "; await settle()");
    EXPECT_EQ(posts(), expected) << action;
  }
}

TEST_F(ScriptTest, SendingIsToldOnlyOfAMessageThatCanBeSent) {
  const struct {
    const char* draft;
    bool isReady;
  } drafts[] = {
      {"{subject: 'S', to: ['a']}", true},
      {"{subject: ' ', to: ['a']}", false},
      {"{subject: 'S', to: []}", false},
      {"{subject: 'S', to: 'a'}", false},
      {"{subject: 1, to: ['a']}", false},
      {"null", false},
      {"{get subject() { throw new Error('no') }}", false},
  };
  open({"sendWatcherScript"}, "<button class=s-send><b id=send>Send</b></button><i id=other>x</i>"
                              "<script>var FastMail = {router: {appController: {draft: null}}}</script>");
  for (const auto& [draft, isReady] : drafts) {
    run(std::string("FastMail.router.appController.draft = ") + draft +
        "; $('#send').click(); $('#other').click()");
    EXPECT_EQ(posts(), isReady ? std::vector<std::string>{"sendClicked"} : std::vector<std::string>{})
        << draft;
  }
  run("FastMail.router.appController.draft = {subject: 'S', to: ['a']};"
      "$('#send').onclick = (e) => e.stopPropagation(); $('#send').click()");
  EXPECT_THAT(posts(), ElementsAre("sendClicked"));
  run("FastMail.router = null; $('#send').click(); delete window.FastMail; document.dispatchEvent(new "
      "Event('click'))");
  EXPECT_THAT(posts(), IsEmpty());
}

TEST_F(ScriptTest, SendDialogIsToldOnce) {
  for (const char* dialog : {"<div class=v-Compose-sendDialog></div>",
                             "<div><p></p><div><div class=v-Compose-sendDialog></div></div></div>"}) {
    open({"sendWatcherScript"},
         "<script>var FastMail = {router: {appController: {draft: {subject: 'S', to: [1]}}}}"
         "</script><button class=s-send></button>");
    const auto add = std::string("document.body.append(' ', element('") + dialog + "')); await settle();";
    run("document.body.append(element('<p>no dialog</p>')); await settle()");
    EXPECT_THAT(posts(), IsEmpty());
    run(add + add);
    EXPECT_THAT(posts(), ElementsAre("sendClicked")) << dialog;
    run("$('.s-send').click(); $('.s-send').click()");
    EXPECT_THAT(posts(), ElementsAre("sendClicked", "sendClicked"));
  }
}

TEST_F(ScriptTest, ComposePageIsReducedToTheEditor) {
  constexpr const char* compose =
      "<section id=compose><button id=close><svg class='v-Icon i-close'></svg></button>"
      "<button id=keep><svg class='v-Icon i-bold'></svg></button><svg class='i-expand'></svg>"
      "<div class='x v-ContextualSidebar-panel'></div><p id=editor contenteditable>text</p></section>";
  constexpr const char* state =
      "[document.body.children.length, document.body.firstElementChild.id,"
      "...[...document.querySelectorAll('#compose > *')].map((e) => e.id || e.tagName)]";
  constexpr const char* reduced = R"([1,"compose","keep","svg","editor"])";

  open({"chromeRemoverScript"}, std::string("<nav>list</nav><div>") + compose + "</div>");
  EXPECT_EQ(value(state), reduced) << "there at once";
  // What the application draws later goes as well; what stays keeps its listeners.
  run("let clicks = 0; $('#keep').addEventListener('click', () => clicks++);"
      "$('#compose').append(element('<div><button><i><svg class=\"i-sidebar\"></svg></i></button></div>'),"
      "  element('<div class=v-ContextualSidebar></div>'));"
      "await settle(); $('#keep').click(); logged.push($('#compose').lastElementChild.outerHTML + clicks)");
  EXPECT_THAT(logs(), ElementsAre("<div></div>1"));
  // Once reduced, what is put beside the editor stays: toasts among others.
  run("document.body.append(element('<p id=toast>x</p>')); await settle()");
  EXPECT_EQ(value("document.getElementById('toast') !== null"), "true");

  open({"chromeRemoverScript"}, "<nav>list</nav>");
  EXPECT_EQ(value("document.body.textContent.trim()"), "\"list\"");
  run(std::string("document.body.append(element(`<div>") + compose + "</div>`)); await settle()");
  EXPECT_EQ(value(state), reduced) << "there later";
}

} // namespace ondrel::tests
