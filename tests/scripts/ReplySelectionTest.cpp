// A reply that quotes just what was selected.
#include "ScriptTest.h"

namespace ondrel::tests {

namespace {

constexpr const char* prefix = "[Ondrel] reply-with-selection: ";

std::string card(const std::string& id, const std::string& body, const std::string& more = "") {
  return "<section class='v-MessageCard " + more + "' id=" + id +
         "><button class=s-reply><i>r</i></button>"
         "<button class=s-reply-all>a</button><div class=v-Message-body>" +
         body + "</div></section>";
}

} // namespace

class ReplySelectionTest : public ScriptTest {
 protected:
  void openPage(const std::string& html) {
    open({"replySelectionScript"}, html + "<div id=compose></div>" + helpers);
    EXPECT_THAT(logs(), ElementsAre(prefix + ("script installed on " + server_.url("/page"))));
  }

  // What was logged, without the prefix and without the lines that only tell of clicks and keys.
  std::vector<std::string> outcomes() {
    std::vector<std::string> result;
    for (auto& line : logs()) {
      if (line.starts_with(prefix))
        line.erase(0, std::string_view(prefix).size());
      if (!line.starts_with("click in") && !line.starts_with("keydown"))
        result.push_back(std::move(line));
    }
    return result;
  }
  std::string captured(const std::string& text) {
    return "captured selection in [" + server_.url("/page") + "] (" + std::to_string(text.size()) +
           " chars): " + text;
  }

  static constexpr const char* helpers = R"(<script>
    const select = async (from, to = from) => {
      const range = document.createRange();
      range.setStartBefore($(from).firstChild ?? $(from));
      range.setEndAfter($(to).lastChild ?? $(to));
      getSelection().removeAllRanges();
      getSelection().addRange(range);
      await new Promise((resolve) => requestAnimationFrame(resolve));
      await settle();
      await advance(150);
    };
    const plain = (value) => {
      $('#compose').innerHTML = '<textarea class=v-TextInput-input></textarea>';
      ownValue($('textarea'), value);
      $('textarea').oninput = () => ++inputs;
    };
    const rich = (html) => {
      $('#compose').innerHTML = `<div class=v-RichText-input contenteditable=true>${html}</div>`;
      $('.v-RichText-input').oninput = () => ++inputs;
    };
    const editor = () => $('.v-RichText-input');
    const again = async () => { document.body.append(' '); await settle() };
    var inputs = 0;
    </script>)";
};

TEST_F(ReplySelectionTest, PlainQuoteIsReplaced) {
  const std::string w68(68, 'w');
  const std::string w80(80, 'x');
  const struct {
    std::string body;  // of the message, wholly selected
    std::string draft; // as the application opened it
    std::string expected;
    std::string outcome;
  } table[] = {
      {"one", "\n\nOn Monday B wrote:\n> all\n> of it\n\n-- \nRobin",
       "\n\nOn Monday B wrote:\n> one\n\n-- \nRobin", "preserved 3 trailing line(s) after the quote"},
      {"<p>first</p>\n<p>second</p>", "> a\n\n> b\n>c", "> first\n>\n> second\n",
       "nothing trailing the quote to preserve"},
      {"<ul><li>a<br>b</li><li>c</li></ul><div><br></div><div><br></div><div><br></div><h2>d</h2>e", "> q",
       "> a\n> b\n> c\n>\n> d\n> e\n", "nothing trailing the quote to preserve"},
      {"a<!-- no --> <b>&lt;b&gt;</b> &amp; <i>c</i>", "> q\n\nsignature", "> a <b> & c\n\nsignature",
       "preserved 2 trailing line(s) after the quote"},
      {"a " + w80 + " b", "> q", "> a\n> " + w80 + "\n> b\n", "nothing trailing the quote to preserve"},
      {w68.substr(1) + " x y", "> q", "> " + w68.substr(1) + "\n> x y\n",
       "nothing trailing the quote to preserve"},
      {w68.substr(2) + " x y", "> q", "> " + w68.substr(2) + " x\n> y\n",
       "nothing trailing the quote to preserve"},
  };
  for (const auto& [body, draft, expected, outcome] : table) {
    openPage(card("card", body));
    evaluate("window.draft = '" + [&] {
      std::string text;
      for (const char c : draft)
        text += c == '\n' ? std::string("\\n") : std::string(1, c);
      return text;
    }() + "'; 0");
    run("await select('.v-Message-body'); $('.s-reply i').click(); plain(draft); await settle()");
    const auto lines = outcomes();
    ASSERT_EQ(lines.size(), 3U) << testing::PrintToString(lines);
    EXPECT_EQ(lines[1], "armed pending swap (reply clicked)");
    EXPECT_EQ(lines[2], "plain-text swap applied (" + outcome + ")");
    const auto result = evaluate("[$('textarea').value, inputs]");
    ASSERT_TRUE(result);
    EXPECT_EQ(result->at(0).as_string(), expected) << body;
    EXPECT_EQ(result->at(1), 1);
  }
}

TEST_F(ReplySelectionTest, SwapHappensOnceAndLeavesTheCaretAtTheTop) {
  openPage(card("card", "one two"));
  run("await select('.v-Message-body'); $('.s-reply-all').click();"
      "plain('no quote yet'); await settle(); $('#compose').prepend(element('<textarea "
      "class=v-TextInput-input>x</textarea>'));"
      "await settle(); $('#compose').innerHTML = ''; plain('\\n> all'); $('textarea').focus();"
      "$('textarea').focus = () => { throw new Error('focus() undoes the swap') }; await settle();");
  EXPECT_THAT(outcomes(), ElementsAre(captured("one two"), "armed pending swap (reply clicked)",
                                      "found 1 textarea(s), none matched the quote marker yet",
                                      "found 2 textarea(s), none matched the quote marker yet",
                                      "plain-text swap applied (nothing trailing the quote to preserve)"));
  EXPECT_EQ(value("[$('textarea').value, $('textarea').selectionStart, $('textarea').selectionEnd]"),
            R"(["> one two\n",0,0])");
  run("plain('> second reply'); await settle(); $('.s-reply').click(); await again()");
  EXPECT_EQ(value("$('textarea').value"), "\"> second reply\"");
  EXPECT_THAT(outcomes(), ElementsAre("reply clicked, no captured selection"));
}

TEST_F(ReplySelectionTest, ArmsOnlyForTheMessageAndInTime) {
  const auto two = card("first", "alpha") + card("second", "beta") +
                   "<p id=outside>text</p><input id=field>"
                   "<div class=v-Message-body id=loose>no card</div>";
  const auto where = " in [" + server_.url("/page") + "]";
  const std::string armed = "armed pending swap (reply clicked)";
  const struct {
    const char* action;
    std::vector<std::string> expected;
  } table[] = {
      {"await select('#first .v-Message-body'); $('#second .s-reply').click()",
       {captured("alpha"), "reply clicked, but on a different message card than the selection"}},
      {"await select('#first .v-Message-body'); await advance(30000); $('#first .s-reply').click()",
       {captured("alpha"), armed}},
      {"await select('#first .v-Message-body'); await advance(30001); $('#first .s-reply').click()",
       {captured("alpha"), "reply clicked, captured selection too stale"}},
      {"await select('#outside')",
       {"selection made" + where + " but not inside a recognized message container"}},
      {"await select('#loose')",
       {"selection in a message container" + where + " but no ancestor .v-MessageCard"}},
      // A selection that ends before its time doesn't count; one that is emptied afterwards still does.
      {"const p = select('#first .v-Message-body'); getSelection().removeAllRanges(); await p;"
       "$('#first .s-reply').click()",
       {"reply clicked, no captured selection"}},
      {"await select('#first .v-Message-body'); getSelection().removeAllRanges(); await advance(1000);"
       "$('#first .s-reply').click()",
       {captured("alpha"), armed}},
      // The newest selection counts.
      {"await select('#first .v-Message-body'); await select('#second .v-Message-body'); $('#second "
       ".s-reply').click()",
       {captured("alpha"), captured("beta"), armed}},
      {"document.dispatchEvent(new MouseEvent('click')); window.dispatchEvent(new Event('keydown'))", {}},
  };
  for (const auto& [action, expected] : table) {
    openPage(two);
    run(action);
    EXPECT_EQ(outcomes(), expected) << action;
  }
}

TEST_F(ReplySelectionTest, KeysArmUnlessTheyAreMeantOtherwise) {
  const std::string fallback = "no .v-MessageCard.is-focused on the page, falling back to the selection card";
  const struct {
    const char* focused;
    const char* key;
    std::vector<std::string> expected;
  } table[] = {
      {"",
       "key('a')",
       {"reply shortcut (a): " + fallback, "armed pending swap (reply shortcut (a) pressed)"}},
      {"first", "key('R')", {"armed pending swap (reply shortcut (r) pressed)"}},
      {"second",
       "key('r')",
       {"reply shortcut (r) pressed, but on a different message card than the selection"}},
      {"first", "key('r', $('#field'))", {}},
      {"first", "key('r', $('#editable b'))", {}},
      {"first",
       "for (const m of ['meta', 'ctrl', 'alt', 'shift']) key('r', document.body, {[m + 'Key']: true})",
       {}},
      {"first", "key('f')", {}},
  };
  for (const auto& [focused, key, expected] : table) {
    openPage(card("first", "alpha") + card("second", "beta") +
             "<input id=field><div id=editable contenteditable=true><b>x</b></div>");
    run("let seen = 0; window.addEventListener('keydown', (e) => seen += e.defaultPrevented ? 100 : 1);"
        "await select('#first .v-Message-body'); logged.length = 0;" +
        (*focused ? "$('#" + std::string(focused) + "').classList.add('is-focused');" : std::string()) + key +
        "; if (seen < 1 || seen > 4) throw new Error('the key was taken away: ' + seen)");
    EXPECT_EQ(outcomes(), expected) << focused << " " << key;
  }
}

TEST_F(ReplySelectionTest, RichQuoteIsReplacedAfterTheDelay) {
  openPage(card("card", "<b>bold</b> &lt;i&gt; <img alt='q\"'>"));
  const auto arm = std::string("await select('.v-Message-body'); $('.s-reply').click(); logged.length = 0;");
  const std::string scheduled = "rich editor + blockquote found, scheduling swap in 250ms";

  // A quote with nothing behind it; further changes in the delay schedule nothing more.
  run(arm +
      "rich('<p>On Monday:</p><blockquote>all</blockquote>'); await settle(); await again(); await "
      "advance(249);"
      "logged.push(editor().querySelector('blockquote').textContent); await advance(1); await advance(1000)");
  EXPECT_THAT(outcomes(), ElementsAre(scheduled, "all",
                                      "rich-text swap applied (nothing trailing the quote to protect)"));
  EXPECT_EQ(value("[editor().innerHTML, inputs]"),
            R"(["<p>On Monday:</p><blockquote><b>bold</b> &lt;i&gt; <img alt=\"q&quot;\"></blockquote>",1])");

  // It is used up.
  run("plain('> whole'); await settle()");
  EXPECT_EQ(value("$('textarea').value"), "\"> whole\"");
  EXPECT_THAT(outcomes(), IsEmpty());

  // A signature that arrives in the delay is protected.
  run(arm + "inputs = 0; rich('<blockquote>all</blockquote>'); await advance(200); editor().append('text', "
            "element('<p>-- R</p>'));"
            "await advance(50); await advance(300)");
  EXPECT_THAT(outcomes(),
              ElementsAre(scheduled, "rich-text swap applied (captured 2 trailing node(s) to protect)",
                          "rich-text tail check: content after the quote is still present"));
  EXPECT_EQ(value("inputs"), "1");

  // The application draws anew and loses the signature; only what is a child of the editor is put back.
  run(arm + "inputs = 0; rich('<blockquote>all</blockquote>tail<p>-- R</p>'); await advance(250);"
            "editor().lastChild.textContent = ''; while (editor().lastChild !== editor().firstChild) "
            "editor().lastChild.remove(); await advance(300)");
  EXPECT_THAT(outcomes(),
              Contains("rich-text tail check: content after the quote went missing, restoring it"));
  EXPECT_EQ(value("[editor().innerHTML.replace(/.*<.blockquote>/, ''), inputs]"), R"(["tail<p>-- R</p>",2])");

  run(arm +
      "rich('<blockquote>all</blockquote><p>-- R</p>'); await advance(250); $('#compose').innerHTML = '';"
      "await advance(300)");
  EXPECT_THAT(outcomes(), Contains("rich-text tail check: blockquote no longer in the document, skipping"));

  run(arm + "rich('<div><blockquote>all</blockquote><p>inside</p></div><p>behind</p>'); await advance(250)");
  EXPECT_THAT(outcomes(), Contains("rich-text swap applied (nothing trailing the quote to protect)"));
}

TEST_F(ReplySelectionTest, EditorThatGoesAwayIsWaitedFor) {
  openPage(card("card", "mine"));
  const std::string scheduled = "rich editor + blockquote found, scheduling swap in 250ms";
  const auto arm = std::string("await select('.v-Message-body'); $('.s-reply').click(); logged.length = 0;");
  run(arm + "rich('<p>loading</p>'); await settle(); rich('<blockquote>all</blockquote>'); await settle();"
            "$('#compose').innerHTML = ''; await advance(250); rich('<blockquote>again</blockquote>'); await "
            "advance(250)");
  EXPECT_THAT(outcomes(),
              ElementsAre("rich editor found, but no blockquote yet", scheduled,
                          "rich-text swap: blockquote gone by the time the delay elapsed, will retry",
                          scheduled, "rich-text swap applied (nothing trailing the quote to protect)"));
  EXPECT_EQ(value("editor().textContent"), "\"mine\"");

  // No quote for half a minute: the next change gives up, and a later quote stays whole.
  run("$('#compose').innerHTML = ''; " + arm +
      "await advance(30000); rich('<p>empty</p>'); await settle();"
      "await advance(1); await again(); editor().append(element('<blockquote>late</blockquote>'));"
      "await settle(); await advance(1000)");
  EXPECT_THAT(outcomes(), ElementsAre("rich editor found, but no blockquote yet",
                                      "rich editor found, but no blockquote yet",
                                      "pending swap expired without finding a matching compose editor"));
  EXPECT_EQ(value("$('blockquote').textContent"), "\"late\"");
}

TEST_F(ReplySelectionTest, ReplyDuringTheDelayHasItsOwnSwap) {
  openPage(card("first", "alpha") + card("second", "beta"));
  run("await select('#first .v-Message-body'); $('#first .s-reply').click(); "
      "rich('<blockquote>all</blockquote>');"
      "await advance(50); await select('#second .v-Message-body'); logged.length = 0; $('#second "
      ".s-reply').click();"
      "await advance(50); logged.push(editor().textContent); await advance(250); "
      "logged.push(editor().textContent)");
  const std::string applied = "rich-text swap applied (nothing trailing the quote to protect)";
  EXPECT_THAT(outcomes(), ElementsAre("armed pending swap (reply clicked)", applied,
                                      "rich editor + blockquote found, scheduling swap in 250ms", "alpha",
                                      applied, "beta"));
}

TEST_F(ReplySelectionTest, EachFrameIsOnItsOwn) {
  // Twice injected, it works once.
  server_.serve("/frame", card("card", "framed") + helpers);
  open({"replySelectionScript", "replySelectionScript"},
       card("card", "outer") + "<div id=compose></div><iframe src='/frame'></iframe>" + helpers);
  run("const frame = $('iframe').contentWindow; await frame.eval(\"select('.v-Message-body')\");"
      "frame.eval(\"$('.s-reply').click()\"); plain('> outer quote'); await again();"
      "logged.push(...frame.logged, $('textarea').value)");
  EXPECT_THAT(outcomes(),
              ElementsAre("script installed on " + server_.url("/page"),
                          "script installed on " + server_.url("/frame"), HasSubstr("(6 chars): framed"),
                          "armed pending swap (reply clicked)", "> outer quote"));
}

} // namespace ondrel::tests
