// What the page is asked: each script is one expression, whose value is the answer.
#include "ScriptTest.h"

namespace ondrel::tests {
namespace {

using boost::json::value;

using AskedScriptsTest = ScriptTest;

TEST_F(AskedScriptsTest, AnAttachmentsLinkIsFoundInTheUnfoldedConversation) {
  const auto script = asked("attachmentLink");
  loadHtml(
      R"(<!doctype html><a href=https://elsewhere.example/G1></a><a href=https://x.usercontent.example/G2></a>
      <button class=v-MessageCard-showMore></button>
      <div class="v-MessageCard is-collapsed"><p class=v-MessageCard-header></p><a id=link></a></div>
      <div class=v-MessageCard><p class=v-MessageCard-header></p></div>)");
  evaluate(R"(clicks = ''; addEventListener('click', ({target}) => {
      clicks += target.tagName;
      link.href = 'https://x.usercontent.example/G1/name';
    }); 0)");
  EXPECT_EQ(evaluate(script + R"(("G1", "usercontent.example"))"),
            value("https://x.usercontent.example/G1/name"));
  EXPECT_EQ(evaluate("clicks"), value("BUTTONP"));
  EXPECT_EQ(evaluate(script + R"(("G3", "usercontent.example"))"),
            value(boost::json::object{{"_linkCount", 2}}));
}

TEST_F(AskedScriptsTest, ASenderHasNoSayInWhichLinkIsAnAttachments) {
  const std::string text = "<div class=v-MessageCard><div class=v-Message-body>";
  const std::string link = "<a href=https://x.usercontent.example/G1/own></a>";
  const std::string traps[] = {text + link + "</div></div>",
                               text + "<div class=v-MessageCard>" + link + "</div></div></div>",
                               "<div class=v-RichText-input contenteditable=true>" + link + "</div>",
                               "<a href=https://evil.example/?x.usercontent.example/G1></a>",
                               "<a href=https://x.usercontent.example.evil.example/G1></a>",
                               "<a href=https://evilusercontent.example/G1></a>",
                               "<a href=ftp://x.usercontent.example/G1></a>",
                               "<a href='https://x.usercontent.example/G2#G1'></a>",
                               text + "<i class=v-MessageCard-showMore></i><div class='v-MessageCard "
                                      "is-collapsed'><i class=v-MessageCard-header></i></div></div></div>"};
  const auto call = asked("attachmentLink") + R"(("G1", "usercontent.example"))";
  for (const auto& trap : traps) {
    loadHtml("<!doctype html>" + trap +
             "<div class=v-MessageView><div class=v-MessageCard>"
             "<a href=https://x.usercontent.example:8443/b/G1></a></div></div>");
    evaluate("clicks = 0; addEventListener('click', () => ++clicks); 0");
    EXPECT_EQ(evaluate(call), value("https://x.usercontent.example:8443/b/G1")) << trap;
    EXPECT_EQ(evaluate("clicks"), value(0)) << trap;
  }
}

TEST_F(AskedScriptsTest, TheMessageIsOpenedAndItsThreadFocused) {
  const auto select = asked("selectRowScript") + R"(("M1", "T1"))";
  const std::string rows = "<li id=o class=is-focused><a href=/mail/Inbox/T2.M9></a></li>"
                           "<li id=t><a href=/mail/Inbox/";
  const struct {
    std::string shown;
    std::string message;
    bool done;
    std::string seen; // the message that was opened and the row that is focused
  } cases[] = {
      {"T1.M1", "null", false, " o"},
      {"T1.M1", "{id: () => 'M2'}", false, " o"},
      {"T1.M1", "{id: () => 'M1'}", true, "M1 o"},
      {"T1.M3", "{id: () => 'M1'}", true, "M1 t"},
      {"T3.M3", "{id: () => 'M1'}", false, "M1 o"},
  };
  loadHtml("");
  EXPECT_EQ(evaluate(select), value(false)) << "no application";
  for (const auto& each : cases) {
    loadHtml("<!doctype html><body>" + rows + each.shown + "></a></li>");
    evaluate("FastMail = {router: {appController: {message: " + each.message +
             ", goMessage: (message) => opened = message.id()}}}; opened = ''; 0");
    EXPECT_EQ(evaluate(select), value(each.done)) << each.seen;
    EXPECT_EQ(evaluate("opened + ' ' + document.querySelector('.is-focused').id"), value(each.seen));
  }
}

TEST_F(AskedScriptsTest, WhatHasBecomeOfALetterIsReadFromThePage) {
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
  const auto script = asked("letterStateScript");
  loadHtml("");
  EXPECT_EQ(evaluate(script), value("absent"));
  for (const auto& each : cases) {
    loadHtml("<!doctype html><body>" + each.html);
    evaluate("FastMail = {router: {appController: {draft: " + each.draft + "}}}; 0");
    EXPECT_EQ(evaluate(script), value(each.expected)) << each.html;
  }

  // A new try isn't judged by what was told of the one before.
  useScripts({pageScript("sendWatcherScript")});
  loadHtml("<!doctype html><body>" + editor + "<b class=s-send>Send</b>" + toast("It was not sent"));
  evaluate("FastMail = {router: {appController: {draft: {subject: 'S', to: ['a']}}}}; 0");
  EXPECT_EQ(evaluate(script), value("failed"));
  evaluate(
      "webkit.messageHandlers.ondrel.postMessage = () => {}; document.querySelector('.s-send').click(); 0");
  EXPECT_EQ(evaluate(script), value("open"));
}

} // namespace
} // namespace ondrel::tests
