// What the page is asked about a letter that was sent or discarded.
#include "ScriptTest.h"

#include "platform/linux/text/ResourceText.h"
#include "scripts/PageScriptSource.h"

namespace ondrel::tests {
namespace {

using LetterStateTest = ScriptTest;

TEST_F(LetterStateTest, IsReadFromThePage) {
  const std::string editor = "<div id=compose><input></div>";
  const auto toast = [](const std::string& text) {
    return "<p class=v-Notification-message>" + text + "</p>";
  };
  const std::string sending =
      "<div class=v-Modal role=dialog><p class=v-Compose-sendDialog>Sending…</p></div>";
  const struct {
    std::string html;
    std::string expected;
    std::string draft = "{}";
  } cases[] = {
      {editor, "open"},
      {editor, "gone", "null"},
      {"<p>list</p>", "gone"},
      {"<p contenteditable=true>reply</p>", "open"},
      {editor + sending, "busy"},
      {"<div class='v-Modal v-Compose-sendDialog' role=dialog>Sending…</div>" + editor, "busy"},
      {"<div id=compose inert></div>", "busy"},
      {editor + toast("Sending…"), "busy"},
      {toast("Your message will be sent in 10 seconds"), "busy"},
      {"<div id=compose inert></div>" + toast("Message sent"), "sent"},
      {toast("Scheduled for 9:00"), "sent"},
      {"<div id=compose inert></div>" + toast("Discarded draft"), "busy"},
      {editor + toast("The message could not be sent. Try again."), "failed"},
      {editor + toast("Couldn’t send"), "failed"},
      {toast("Sending failed"), "failed"},
      {editor + sending + "<div role=alertdialog>No attachment</div>", "asking"},
      {editor + "<dialog open>?</dialog>", "asking"},
      {editor + "<dialog>?</dialog><div class=v-Modal style=display:none></div>", "open"},
  };
  const auto script = scripts::pageScriptSource(platform::text::resourceText,
                                                scripts::ConsoleRelay::unwanted)("letterStateScript");
  ASSERT_TRUE(script);
  const auto says = [&] {
    const auto word = evaluate(*script);
    return word && word->is_string() ? std::string(word->get_string()) : "nothing";
  };
  loadHtml("");
  EXPECT_EQ(says(), "absent");
  for (const auto& each : cases) {
    loadHtml("<!doctype html><body>" + each.html);
    evaluate("FastMail = {router: {appController: {draft: " + each.draft + "}}}; 0");
    EXPECT_EQ(says(), each.expected) << each.html;
  }

  // A new try isn't judged by what was told of the one before.
  useScripts({pageScript("sendWatcherScript")});
  loadHtml("<!doctype html><body>" + editor + "<b class=s-send>Send</b>" + toast("It was not sent"));
  evaluate("FastMail = {router: {appController: {draft: {subject: 'S', to: ['a']}}}}; 0");
  EXPECT_EQ(says(), "failed");
  evaluate(
      "webkit.messageHandlers.ondrel.postMessage = () => {}; document.querySelector('.s-send').click(); 0");
  EXPECT_EQ(says(), "open");
}

} // namespace
} // namespace ondrel::tests
