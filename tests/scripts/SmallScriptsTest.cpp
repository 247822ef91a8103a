// The scripts of ordinary tabs that are a few lines each.
#include "ScriptTest.h"

namespace ondrel::tests {

namespace {

// The application as far as the scripts read it.
constexpr const char* application = R"(<script>
  var subject = '', id = '';
  const message = {get: (name) => name === 'subject' ? subject : null, id: () => id};
  var FastMail = {router: {app: 'mail', title: '', appController: {message: null}}};
</script>)";

} // namespace

using SmallScriptsTest = ScriptTest;

TEST_F(SmallScriptsTest, TitleFollowsTheMessageThenTheRouter) {
  open({"titlePollScript"}, application);
  const struct {
    const char* change;
    std::vector<std::string> expected;
  } table[] = {
      {"", {}},
      {"FastMail.router.title = 'Inbox'", {"titleChange: Inbox"}},
      {"", {}},
      {"subject = 'A'; id = 'M1'; FastMail.router.appController.message = message",
       {"titleChange: A", "ondrelMessageChanged: M1"}},
      {"FastMail.router.title = ''; FastMail.router.appController.message = null", {}},
      {"FastMail.router.appController.message = message", {"ondrelMessageChanged: M1"}},
      {"id = 'M2'", {"ondrelMessageChanged: M2"}},
      {"subject = 'B'; message.id = undefined", {"titleChange: B"}},
      {"subject = 'A'", {"titleChange: A"}},
      {"subject = ''; FastMail.router.title = 'Kept'", {"titleChange: Kept"}},
  };
  for (const auto& [change, expected] : table) {
    run(std::string(change) + "; await advance(500)");
    EXPECT_EQ(posts(), expected) << change;
  }
  EXPECT_THAT(logs(), IsEmpty());
}

TEST_F(SmallScriptsTest, TitlePollOutlivesAPageThatIsNotReady) {
  open({"titlePollScript"}, "<p>loading</p>");
  run("await advance(1499)");
  EXPECT_THAT(logs(), ElementsAre("Failed to grab the email subject", "Failed to grab the email subject"));
  run("window.FastMail = {router: {title: 'Ready', appController: {}}}; await advance(1)");
  EXPECT_THAT(posts(), ElementsAre("titleChange: Ready"));
}

TEST_F(SmallScriptsTest, NotificationSettingIsDisabled) {
  open({"titlePollScript"}, std::string(application) + "<div id=s-settings-notifications></div>");
  const auto style = "`${$('#s-settings-notifications').style.cssText}`";
  run("await advance(500)");
  EXPECT_EQ(value(style), "\"\"") << "only in the settings";
  run("FastMail.router.app = 'settings'; await advance(500)");
  EXPECT_EQ(value(style), "\"pointer-events: none; opacity: 0.6;\"");
  run("$('#s-settings-notifications').remove(); FastMail.router.title = 'Settings'; await advance(500)");
  EXPECT_THAT(posts(), ElementsAre("titleChange: Settings"));
  EXPECT_THAT(logs(), ElementsAre("Failed to disable notification button"));
}

TEST_F(SmallScriptsTest, MouseoverTellsTheLink) {
  // Injected twice, it still tells once.
  open({"mouseoverScript", "mouseoverScript"}, "<a id=one href='https://one.example/?a=1&b=2'><b "
                                               "id=inside>x</b></a><a id=two href='mailto:a@b.example'>y</a>"
                                               "<p id=out>z</p>");
  const struct {
    const char* action;
    std::vector<std::string> expected;
  } table[] = {
      {"over('#inside')", {"mouseover: https://one.example/?a=1&b=2"}},
      {"over('#one'); await advance(49); over('#inside')", {}},
      {"over('#two'); over('#one')",
       {"mouseover: mailto:a@b.example", "mouseover: https://one.example/?a=1&b=2"}},
      {"await advance(50); over('#one')", {"mouseover: https://one.example/?a=1&b=2"}},
      {"over('#out')", {"mouseover: "}},
      {"document.dispatchEvent(new MouseEvent('mouseover')); await advance(50)", {}},
      {"$('#two').onmouseover = (e) => e.stopPropagation(); over('#two')", {"mouseover: mailto:a@b.example"}},
      {"const {postMessage} = window.webkit.messageHandlers.ondrel;"
       "window.webkit.messageHandlers.ondrel.postMessage = null; over('#one');"
       "window.webkit.messageHandlers.ondrel.postMessage = postMessage;",
       {}},
  };
  for (const auto& [action, expected] : table) {
    run(std::string("const over = (s) => $(s).dispatchEvent(new MouseEvent('mouseover', {bubbles: true}));") +
        action);
    EXPECT_EQ(posts(), expected) << action;
  }
}

TEST_F(SmallScriptsTest, PageMayNotifyAndShowsNothing) {
  open({"notificationShimScript"}, "<script>var shown = new Notification('hello', {body: 'x'});"
                                   "var asked = []; Notification.requestPermission((answer) => "
                                   "asked.push(answer)).then((a) => asked.push(a));"
                                   "Notification.requestPermission('no function')</script>");
  run("await settle()");
  EXPECT_EQ(value("[Notification.permission, shown instanceof Notification, ...asked]"),
            R"(["granted",true,"granted","granted"])");
  // Assigning is in vain, defining works.
  loadHtml("<script>window.Notification = null; var kept = Notification.permission</script>"
           "<script>function Notification() { this.own = true }</script>");
  EXPECT_EQ(value("[kept, new Notification().own]"), R"(["granted",true])");
}

TEST_F(SmallScriptsTest, PrintAsksTheProgram) {
  server_.serve("/frame", "<p>frame</p>");
  open({"printShimScript"}, "<iframe src='/frame'></iframe>");
  run("window.print()");
  EXPECT_THAT(posts(), ElementsAre("print"));
  EXPECT_EQ(value("$('iframe').contentWindow.print.toString().includes('native code')"), "true");
}

TEST_F(SmallScriptsTest, ConsoleIsRelayed) {
  server_.serve("/frame", "<script>console.error('from the frame')</script>");
  open({"consoleRelayScript"},
       "<script>window.addEventListener('error', (event) => event.preventDefault())</script>"
       "<iframe src='/frame'></iframe>");
  EXPECT_THAT(posts(), ElementsAre("consoleLog: [error] from the frame"));
  const struct {
    const char* call;
    std::vector<std::string> expected;
  } table[] = {
      {"console.log('a', 1, null, undefined, {b: [2]}, true)", {"[log] a 1 null undefined {\"b\":[2]} true"}},
      {"console.warn(Symbol('s'), () => 1)", {"[warn] Symbol(s) () => 1"}},
      {"console.error()", {"[error] "}},
      {"console.info('not'); console.debug('these')", {}},
      {"window.onerror('text', 'page.js', 3, 7, {why: 1})", {"[onerror] text at page.js:3:7 {\"why\":1}"}},
      {"Promise.reject(new Error('lost')); await settle(); await settle()",
       {"[unhandledrejection] Error: lost"}},
      // A cyclic object is the caller's own trouble, and ends there.
      {"const o = {}; o.o = o; let caught; try { console.log(o) } catch (e) { caught = e.name } "
       "console.log(caught)",
       {"[log] TypeError"}},
  };
  for (const auto& [call, expected] : table) {
    run(call);
    std::vector<std::string> whole;
    for (const auto& text : expected)
      whole.push_back("consoleLog: " + text);
    EXPECT_EQ(posts(), whole) << call;
  }
  EXPECT_THAT(logs(), ElementsAre(HasSubstr("a 1"), "TypeError")) << "what was there before is still called";

  evaluate("document.body.append(Object.assign(document.createElement('script'), {text: 'throw new "
           "Error(\"mine\")'}))");
  run("await settle()");
  EXPECT_THAT(posts(), ElementsAre(HasSubstr("[onerror] Error: mine at http://127.0.0.1")));
}

} // namespace ondrel::tests
