// A file that is too large becomes a link.
#include "ScriptTest.h"

namespace ondrel::tests {

namespace {

constexpr const char* prefix = "[Ondrel] files-auto-share: ";
constexpr const char* richQuote = "<p>Hello</p><blockquote>old</blockquote>";

// The application's compose page, its refusal and its storage, as far as the script meets them. The test
// decides when an upload ends (`finish`) and what is missing.
constexpr const char* application = R"(<section class=v-Compose>
  <div class="u-flex u-flex-wrap u-m-0 u-hideifempty"></div><div id=body></div></section><script>
  var inputs = 0, uploads = [], nodes = [];
  const watch = (editor) => editor.addEventListener('input', () => ++inputs);
  const rich = (html) => {
    $('#body').innerHTML = `<div class=v-RichText-input contenteditable=true>${html}</div>`;
    watch($('#body > div'));
  };
  const plain = (text) => {
    $('#body').innerHTML = '<textarea class=v-TextInput-input></textarea>';
    ownValue($('textarea'), text);
    watch($('textarea'));
  };
  const node = (values) => ({
    get: (name) => values[name],
    set: (name, value) => {
      values[name] = value;
      if (name === 'isSharedLinkEnabled' && value === true) {
        setTimeout(() => values.sharedLinkUrl = linkUrl, 400);
      }
    },
  });
  var linkUrl = 'https://share.example/x?a=1&b="2"';
  class StorageNode {}
  class StorageNodeListController {
    constructor({store, folder}) { this.isRight = store === FastMail.store && folder.get('name') === 'My Files' }
    uploadToCurrent(files) {
      uploads.push(...files.map((file) => `${file.name} ${file.size} ${this.isRight}`));
      nodes.push(node({name: files[0].name}));
      throw new TypeError('no view');
    }
  }
  var FastMail = {
    store: {getAll(type) { if (type === StorageNode) return nodes; throw new Error('what?') }},
    router: {async loadApp(name) {
      FastMail.classes = {StorageNode, StorageNodeListController};
      setTimeout(() => name === 'files' && nodes.push(node({name: 'My Files'})), 600);
    }},
  };
  const finish = (name) => nodes.findLast((n) => n.get('name') === name && !n.get('blobId')).set('blobId', 'G1');
  const transfer = (name, size) => {
    const data = new DataTransfer();
    data.items.add(new File(['x'.repeat(size)], name));
    return data;
  };
  const attach = (name, size = 9) => {
    const input = element('<input type=file>');
    document.body.append(input);
    input.files = transfer(name, size).files;
    input.dispatchEvent(new Event('change', {bubbles: true}));
    input.remove();
  };
  const modal = (title, text) => {
    const shown = element('<div class="v-Dialog u-modal" role=alertdialog><h1></h1><p class=u-trim></p></div>');
    shown.querySelector('h1').textContent = ` ${title} `;
    shown.querySelector('p').textContent = `\n${text}\n`;
    document.body.append(element('<div></div>'));
    document.body.lastElementChild.append(shown);
    return shown;
  };
  const textFor = (name) => `Cannot attach file ${name}. The total size of attached files cannot exceed 70MB.`;
  const refuse = async (name) => { const shown = modal('File too large', textFor(name)); await settle(); return shown };
  const share = async (name) => {
    attach(name);
    await refuse(name);
    await advance(1000);
    finish(name);
    await advance(1500);
  };
  const chip = () => $('.v-ComposeAttachment');
  </script>)";

} // namespace

class FilesAutoShareTest : public ScriptTest {
 protected:
  void openCompose() {
    open({"filesAutoShareScript"}, application);
    EXPECT_THAT(logs(), ElementsAre(prefix + ("script installed on " + server_.url("/page"))));
  }
  std::vector<std::string> lines() {
    auto result = logs();
    for (auto& line : result) {
      EXPECT_TRUE(line.starts_with(prefix)) << line;
      line.erase(0, std::string_view(prefix).size());
    }
    return result;
  }
};

TEST_F(FilesAutoShareTest, RefusedFileBecomesALink) {
  openCompose();
  run(std::string("rich('") + richQuote +
      "'); attach('big.zip', 12); const shown = await refuse('big.zip');"
      "window.shown = [...shown.children].map((e) => e.textContent); await advance(1000)");
  EXPECT_EQ(
      value("shown"),
      R"(["Uploading via Fastmail Files","\"big.zip\" is too large to attach directly. Ondrel is uploading it to )"
      R"(Fastmail Files and will add a share link to your email automatically."])");
  EXPECT_THAT(
      lines(),
      ElementsAre("captured file via change: big.zip (12 bytes)",
                  "\"File too large\" modal detected for: big.zip",
                  "processing oversized attachment: big.zip",
                  "uploadToCurrent threw (expected — it tries to notify a UI view that is not mounted, "
                  "after already starting the upload): TypeError: no view"));
  EXPECT_EQ(value("uploads"), R"(["big.zip 12 true"])");
  EXPECT_EQ(
      value("$('.u-hideifempty').innerHTML"),
      R"("<div class=\"v-ComposeAttachment\" data-ondrel-files-chip=\"big.zip\"><div class=\"u-flex u-relative )"
      R"(u-items-center\"><svg viewBox=\"0 0 24 24\" class=\"u-standardicon v-Icon i-attachment u-sq-20 u-ml-2\" )"
      R"(role=\"presentation\"><path d=\"M9.42,13l6.23-6.19c1.13-1.13,2.22-1.2,3-.43.61.61,1.08,1.74-.22,3l-7.94,)"
      R"(7.89a3.36,3.36,0,0,1-4.75,0h0a3.33,3.33,0,0,1,0-4.72l6.84-6.8\"></path></svg><span class=\"v-ComposeAttach)"
      R"(ment-label\">big.zip</span><p class=\"v-ComposeAttachment-size\"><span class=\"ondrel-files-spinner\"></s)"
      R"(pan>Uploading via Fastmail Files…</p><span class=\"v-ComposeAttachment-divider\"></span><button class=\"v-B)"
      R"(utton v-ComposeAttachment-remove\" type=\"button\" style=\"visibility: hidden;\"><svg viewBox=\"0 0 24 24\" )"
      R"(fill=\"none\" stroke=\"currentColor\" stroke-linecap=\"round\" stroke-linejoin=\"round\" stroke-width=\"1.5)"
      R"(\" role=\"presentation\" class=\"v-Icon i-cancel\"><line x1=\"16\" y1=\"8\" x2=\"8\" y2=\"16\"></line><line )"
      R"(x1=\"8\" y1=\"8\" x2=\"16\" y2=\"16\"></line></svg></button></div></div>")");
  EXPECT_EQ(value("getComputedStyle($('.ondrel-files-spinner')).animationName"), "\"ondrelFilesSpin\"");
  EXPECT_THAT(posts(), IsEmpty());

  run("finish('big.zip'); await advance(1400)");
  EXPECT_THAT(lines(), ElementsAre("uploaded and shared \"big.zip\": https://share.example/x?a=1&b=\"2\"",
                                   "inserted share link for \"big.zip\" into the open compose"));
  EXPECT_THAT(posts(), ElementsAre("ondrelFilesAutoShare: success, big.zip, "));
  EXPECT_EQ(
      value("[...chip().firstChild.children].slice(1, 3).map((e) => e.outerHTML)"),
      R"(["<a class=\"v-ComposeAttachment-label\" href=\"https://share.example/x?a=1&amp;b=&quot;2&quot;\" )"
      R"(target=\"_blank\" rel=\"noopener\">big.zip</a>","<p class=\"v-ComposeAttachment-size\">via Fastmail Files</p>"])");
  EXPECT_EQ(
      value("[$('#body > div').innerHTML, inputs]"),
      R"(["<p>Hello</p><p data-ondrel-files-share=\"big.zip\">Shared via Fastmail Files: <a href=\"https://share)"
      R"(.example/x?a=1&amp;b=&quot;2&quot;\">big.zip</a></p><blockquote>old</blockquote>",1])");

  run("if ($('.v-ComposeAttachment-remove').style.visibility !== '') throw new Error('hidden');"
      "const button = $('.v-ComposeAttachment-remove'); const event = new MouseEvent('click', {cancelable: "
      "true});"
      "button.dispatchEvent(event); logged.push(`[Ondrel] files-auto-share: ${event.defaultPrevented}`)");
  EXPECT_THAT(lines(), ElementsAre("removed the Fastmail Files share for \"big.zip\"", "true"));
  EXPECT_EQ(value("[chip(), $('#body > div').innerHTML, inputs]"),
            R"([null,"<p>Hello</p><blockquote>old</blockquote>",2])");
}

TEST_F(FilesAutoShareTest, LinkStandsAboveTheQuoteOfAPlainBody) {
  const std::string line = R"(Shared via Fastmail Files: a.zip - https://share.example/x?a=1&b=\"2\")";
  const struct {
    std::string before;
    std::string after;
    std::string removed;
  } table[] = {
      {"", line, ""},
      {R"(Hi\n\nOn Monday:\n> old\n-- \nR)", R"(Hi\n\nOn Monday:\n\n)" + line + R"(\n> old\n-- \nR)",
       R"(Hi\n\nOn Monday:\n\n> old\n-- \nR)"},
      {"> old", line + R"(\n> old)", "> old"},
      {"typed", R"(typed\n\n)" + line, R"(typed\n)"},
      {R"(no > quote\n)", R"(no > quote\n\n\n)" + line, R"(no > quote\n\n)"},
  };
  for (const auto& [before, after, removed] : table) {
    openCompose();
    run("plain(\"" + before + "\"); await share('a.zip')");
    EXPECT_EQ(value("[$('textarea').value, inputs]"), "[\"" + after + "\",1]");
    run("$('.v-ComposeAttachment-remove').click()");
    EXPECT_EQ(value("[$('textarea').value, inputs]"), "[\"" + removed + "\",2]");
  }
  // Only the first line that equals the remembered one goes.
  openCompose();
  run("plain(''); await share('a.zip'); const line = $('textarea').value;"
      "ownValue($('textarea'), `x ${line}\\n${line}\\n${line}`); $('.v-ComposeAttachment-remove').click();"
      "if ($('textarea').value !== `x ${line}\\n${line}`) throw new Error($('textarea').value)");
}

TEST_F(FilesAutoShareTest, HostileNamesAreText) {
  const char* names[] = {"'<img src=x onerror=attacked()>.zip'",
                         "`\"quotes\" 'and' \\`ticks\\` ] } \\\\`",
                         "'line\\nbreak\\r\\n> quoted'",
                         "'x'.repeat(10000)",
                         "'inv\\u202efdp.exe'",
                         "'constructor'",
                         "'a. The total size is fine'"};
  for (const auto* name : names) {
    for (const char* editor : {"rich", "plain"}) {
      openCompose();
      run(std::string("window.attacked = () => { throw new Error('attacked') }; ") + editor +
          "('');"
          "const name = " +
          name +
          "; window.name_ = name; attach(name); const shown = await refuse(name);"
          "if (!shown.lastChild.textContent.startsWith(`\"${name}\" is too large`)) throw new Error('modal');"
          "if ($('.v-ComposeAttachment-label').textContent !== name) throw new Error('chip');"
          "if ($('img')) throw new Error('markup'); await advance(1000); finish(name); await advance(1500)");
      EXPECT_EQ(value("[$('.v-ComposeAttachment-label').textContent === name_, "
                      "chip().dataset.ondrelFilesChip === name_,"
                      "document.querySelectorAll('img').length]"),
                "[true,true,0]")
          << name;
      const auto sent =
          std::string(editor) == "rich"
              ? "$('#body a').textContent === name_ && $('#body p').children.length === 1"
              : "$('textarea').value === `Shared via Fastmail Files: ${name_} - ${linkUrl}`.replace("
                "/\\r\\n?/g, '\\n')";
      EXPECT_EQ(value(sent), "true") << name;
      run("$('.v-ComposeAttachment-remove').click()");
      EXPECT_EQ(value("$('textarea')?.value ?? $('#body > div').textContent"), "\"\"") << name;
      ASSERT_EQ(delegate_.messages.back().body.at("status").as_string(), "success") << name;
    }
  }
}

TEST_F(FilesAutoShareTest, TakesTheFreshestFileOnce) {
  const std::string none = "ondrelFilesAutoShare: error, a, no captured file";
  const struct {
    const char* action;
    std::string uploads;
    std::vector<std::string> expected;
  } table[] = {
      {"attach('a', 1); await advance(15000)", R"(["a 1 true"])", {}},
      {"attach('a', 1); await advance(15001)", "[]", {none}},
      {"attach('b', 1)", "[]", {none}},
      {"attach('a', 1); attach('a', 2); attach('b', 3)", R"(["a 2 true"])", {}},
      {"attach('a', 1); await advance(10000); attach('a', 2); await advance(10000)", R"(["a 2 true"])", {}},
      {"attach('a', 1); await refuse('a')", R"(["a 1 true"])", {none}},
      {"document.body.dispatchEvent(new DragEvent('drop', {bubbles: true, dataTransfer: transfer('a', 4)}))",
       R"(["a 4 true"])",
       {}},
      {"document.body.dispatchEvent(new ClipboardEvent('paste', {bubbles: true, clipboardData: transfer('a', "
       "5)}))",
       R"(["a 5 true"])",
       {}},
      {"for (const type of ['change', 'drop', 'paste']) document.body.dispatchEvent(new Event(type, "
       "{bubbles: true}))",
       "[]",
       {none}},
  };
  for (const auto& [action, uploads, expected] : table) {
    openCompose();
    run("rich(''); " + std::string(action) + "; window.shown = await refuse('a'); await advance(1000)");
    EXPECT_EQ(value("uploads"), uploads) << action;
    EXPECT_EQ(posts(), expected) << action;
    if (!expected.empty())
      EXPECT_EQ(value("shown.textContent.includes('Cannot attach file a.')"), "true")
          << "the modal's own words stay";
  }
  EXPECT_THAT(logs(), Contains(std::string(prefix) +
                               "no recently captured File object matches \"a\" — cannot auto-share "
                               "it, leaving Fastmail's own message as-is"));
}

TEST_F(FilesAutoShareTest, OnlyTheRefusalIsRewritten) {
  const struct {
    const char* action;
    std::vector<std::string> expected;
  } table[] = {
      // Incomplete at first, then complete.
      {"const m = modal('File too large', textFor('a')); const p = m.lastChild; p.remove(); await settle();"
       "m.append(p); await settle()",
       {"\"File too large\" modal detected for: a", "processing oversized attachment: a"}},
      // Judged once: another title that changes later is left alone.
      {"const m = modal('Something else', textFor('a')); await settle();"
       "m.firstChild.textContent = 'File too large'; await settle()",
       {}},
      {"modal('File too large', 'It is 99MB.')",
       {"modal titled \"File too large\" but message did not match the expected shape: It is 99MB."}},
      {"modal('File too large', textFor('a') + ' Sorry.'); modal('File too large', 'Sorry. ' + textFor('a'))",
       {"modal titled \"File too large\" but message did not match the expected shape: Cannot attach file a. "
        "The total "
        "size of attached files cannot exceed 70MB. Sorry.",
        "modal titled \"File too large\" but message did not match the expected shape: Sorry. Cannot attach "
        "file a. The "
        "total size of attached files cannot exceed 70MB."}},
      // The first infix ends the name.
      {"await refuse('a. The total size of attached files cannot exceed 1')",
       {"\"File too large\" modal detected for: a", "processing oversized attachment: a"}},
      // Another limit makes no difference.
      {"modal('File too large', textFor('a').replace('70', '2.5'))",
       {"\"File too large\" modal detected for: a", "processing oversized attachment: a"}},
      {"document.body.append(element('<div role=alertdialog><h1>File too large</h1><p "
       "class=u-trim>x</p></div>'))",
       {}},
  };
  for (const auto& [action, expected] : table) {
    openCompose();
    run("rich(''); attach('a'); logged.length = 0;" + std::string(action) + "; await settle()");
    EXPECT_EQ(lines(), expected) << action;
  }
}

TEST_F(FilesAutoShareTest, FilesAreHandledOneAfterTheOther) {
  // Injected twice, it works once.
  open({"filesAutoShareScript", "filesAutoShareScript"}, application);
  EXPECT_EQ(lines().size(), 1U);
  run("rich(''); attach('a'); attach('b'); modal('File too large', textFor('a')); await refuse('b'); await "
      "advance(5000)");
  EXPECT_EQ(value("[uploads, [...document.querySelectorAll('.v-ComposeAttachment')].map((c) => "
                  "c.dataset.ondrelFilesChip)]"),
            R"([["a 9 true"],["a"]])");
  run("finish('a'); await advance(3000)");
  EXPECT_THAT(posts(), ElementsAre("ondrelFilesAutoShare: success, a, "));
  EXPECT_EQ(value("uploads"), R"(["a 9 true","b 9 true"])");
  // The first ends in failure: the queue goes on, and the modal's dismissal changes nothing.
  // A file of the first one's name has no chip of its own.
  run("attach('c'); (await refuse('c')).remove(); linkUrl = ''; finish('b'); await advance(12000);"
      "linkUrl = 'https://share.example/c'; finish('c'); await advance(3000); await share('a')");
  EXPECT_THAT(posts(),
              ElementsAre("ondrelFilesAutoShare: error, b, Error: timed out waiting for a share link to be "
                          "generated for \"b\"",
                          "ondrelFilesAutoShare: success, c, ", "ondrelFilesAutoShare: success, a, "));
  EXPECT_EQ(value("[...document.querySelectorAll('.v-ComposeAttachment-label')].map((c) => c.textContent)"),
            R"(["a","c"])");
  EXPECT_EQ(
      value("[...document.querySelectorAll('#body p')].map((p) => p.textContent)"),
      R"(["Shared via Fastmail Files: a","Could not share \"b\" via Fastmail Files — attach it manually.",)"
      R"("Shared via Fastmail Files: c","Shared via Fastmail Files: a"])");
}

TEST_F(FilesAutoShareTest, FailuresAreToldInTheBodyAndTheReport) {
  const struct {
    const char* preparation;
    int milliseconds; // until it must have given up, and not a step of its poll before
    int step;
    std::string reason;
  } table[] = {
      {"delete window.FastMail; FastMail = undefined", 0, 0, "FastMail internals not available"},
      {"FastMail.store = null", 0, 0, "FastMail internals not available"},
      {"FastMail.router.loadApp = {}", 0, 0, "FastMail internals not available"},
      {"FastMail.router.loadApp = async () => {}", 0, 0,
       "FastMail Files classes still not available after loadApp(\"files\")"},
      {"FastMail.store.getAll = () => { throw new Error('no') }", 10000, 250,
       "timed out waiting for the \"My Files\" root folder to sync"},
      {"window.never = true", 600750, 1000, "timed out waiting for the upload of \"a\" to finish"},
      {"linkUrl = ''; setTimeout(() => finish('a'), 900)", 11750, 250,
       "timed out waiting for a share link to be generated for \"a\""},
  };
  for (const auto& [preparation, milliseconds, step, reason] : table) {
    openCompose();
    run("rich('<blockquote>q</blockquote>'); attach('a'); " + std::string(preparation) +
        "; await refuse('a'); await advance(" + std::to_string(std::max(milliseconds - step, 0)) + ")");
    if (step > 0) {
      EXPECT_THAT(posts(), IsEmpty()) << preparation;
      EXPECT_EQ(value("chip() !== null"), "true") << preparation;
      run("await advance(" + std::to_string(step) + ")");
    }
    EXPECT_THAT(posts(), ElementsAre("ondrelFilesAutoShare: error, a, Error: " + reason)) << preparation;
    EXPECT_EQ(
        value("[chip(), $('#body > div').innerHTML, inputs]"),
        R"([null,"<p>Could not share \"a\" via Fastmail Files — attach it manually.</p><blockquote>q</blockquote>",1])");
    EXPECT_THAT(lines(), Contains("failed to auto-share \"a\": Error: " + reason));
  }

  // No editor left: only the report goes out, after ten seconds.
  openCompose();
  run("delete window.FastMail; FastMail = undefined; attach('a'); await refuse('a'); await advance(9999)");
  EXPECT_THAT(posts(), IsEmpty());
  run("await advance(1)");
  EXPECT_THAT(posts(),
              ElementsAre("ondrelFilesAutoShare: error, a, Error: FastMail internals not available"));
  EXPECT_THAT(
      lines(),
      Contains("also could not write the error message into compose for \"a\": Error: timed out waiting "
               "for the compose editor to be present"));
}

TEST_F(FilesAutoShareTest, GoesOnWithoutWhatItCanDoWithout) {
  openCompose();
  run("rich(''); $('.u-hideifempty').remove(); const {loadApp} = FastMail.router;"
      "FastMail.router.loadApp = async (name) => { await loadApp(name); throw new Error('late') }; await "
      "share('a')");
  EXPECT_THAT(posts(), ElementsAre("ondrelFilesAutoShare: success, a, "));
  const auto told = lines();
  EXPECT_THAT(
      told,
      Contains("could not show the uploading chip for \"a\": Error: could not find the attachment chip row"));
  EXPECT_THAT(
      told,
      Contains(
          "loadApp(\"files\") threw, continuing in case the classes are already available: Error: late"));
  EXPECT_EQ(value("$('#body p').textContent"), R"("Shared via Fastmail Files: a")");
}

} // namespace ondrel::tests
