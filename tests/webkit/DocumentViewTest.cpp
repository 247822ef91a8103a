// Pages that the program makes of other people's texts, in the real engine.
#include "support/WebKitTest.h"

namespace ondrel::tests {
namespace {

class DocumentViewTest : public WebKitTest {
 protected:
  void SetUp() override {
    WebKitTest::SetUp();
    view_ = factory_->makeDocumentView();
    view_->setDelegate(&delegate_);
    view_->addScriptMessageHandler("ondrel");
    show(*view_);
  }
  void load(const std::string& html) {
    const auto finished = delegate_.count("finish");
    view_->loadHTML(html);
    ASSERT_TRUE(waitForEvent("finish", finished + 1));
  }
};

TEST_F(DocumentViewTest, LoadsNothingFromOutside) {
  const auto out = [this](const std::string& name) { return server_.url("/" + name); };
  for (const auto* kind : {"img", "css", "import", "font", "frame", "object", "embed", "video", "track",
                           "script", "prefetch", "icon", "ping", "input", "background", "svg", "base"})
    server_.serve("/" + std::string(kind), "x");
  const auto page =
      "<html><head><base href='" + server_.url("/base/") +
      "'>" //
      "<link rel=stylesheet href='" +
      out("css") + "'><link rel=prefetch href='" + out("prefetch") + "'>" + "<link rel=icon href='" +
      out("icon") + "'><style>@import '" + out("import") + "';" + "@font-face { font-family: f; src: url(" +
      out("font") + ") } body { font-family: f; background: url(" + out("background") +
      ") }</style></head><body>text<img src='" + out("img") + "'><iframe src='" + out("frame") +
      "'></iframe><object data='" + out("object") + "'></object><embed src='" + out("embed") +
      "'><video src='" + out("video") + "' autoplay><track default src='" + out("track") + "'></video>" +
      "<input type=image src='" + out("input") + "'><svg><image href='" + out("svg") + "'/></svg>" +
      "<script src='" + out("script") + "'></script><img src=relative></body></html>";
  load(page);
  runFor(500ms);
  EXPECT_EQ(server_.totalRequests(), 0);

  // Any other view asks for nearly all of it.
  RecordingDelegate other;
  const auto ordinary = makeView(other);
  show(*ordinary);
  ordinary->loadHTML(page);
  EXPECT_TRUE(waitFor([&] { return server_.totalRequests() >= 8; })) << server_.totalRequests();
  ordinary->setDelegate(nullptr);
}

TEST_F(DocumentViewTest, RunsNoScript) {
  load("<title>before</title><script>document.title = 'script'</script>"
       "<img src='data:,x' onerror=\"document.title = 'handler'\"><svg "
       "onload=\"document.title='svg'\"></svg><a href=\"javascript:void(document.title='link')\">x</a>"
       "<iframe srcdoc=\"<script>top.document.title='frame'</script>\"></iframe>" +
       posting("'message'"));
  EXPECT_TRUE(waitFor([this] { return view_->title() == "before"; }));
  const auto clicked = evaluate("document.querySelector('a').click()");
  EXPECT_TRUE(clicked) << "what the program evaluates does run";
  runFor(200ms);
  EXPECT_EQ(view_->title(), "before");
  EXPECT_TRUE(delegate_.messages.empty());
}

} // namespace
} // namespace ondrel::tests
