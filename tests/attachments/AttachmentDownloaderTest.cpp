#include "AttachmentWorld.h"

namespace ondrel::attachments {
namespace {

class AttachmentDownloaderTest : public AttachmentTest {
 protected:
  // How the next download of such a file ends, and when.
  std::string endOf(const std::string& name, std::function<void()> meanwhile = {}) {
    const auto begin = loop.now();
    const auto item = downloader.download(info("G1", name));
    if (meanwhile) {
      const auto loads = page()->loads.size();
      loop.runUntil([&] { return page()->loads.size() > loads; }, 1s);
      meanwhile();
    }
    loop.runUntil([&] { return item->hasEnded(); }, 10min);
    const auto seconds = std::chrono::round<std::chrono::seconds>(loop.now() - begin).count();
    return fmt::format("{} ({} s)", item->state->error, seconds);
  }
};

TEST_F(AttachmentDownloaderTest, SavesOneAfterTheOtherUnderFreeNames) {
  files.files = {{"/downloads/a.tar.gz", ""}, {"/downloads/a.tar 2.gz", ""}, {"/downloads/b", ""}};
  const auto first = downloader.download(info("G1", "a.tar.gz"));
  const auto second = downloader.download(info("G2", "../\u202Eb"));
  const auto third = downloader.download(info("G3", "b"));
  const auto fourth = downloader.download(info("G4", "c"));
  EXPECT_EQ(first->state->kind, Kind::downloading);
  EXPECT_EQ(second->state->kind, Kind::waiting);
  fourth->cancel();
  http.streamLength = 6;
  serve({"one", "two"});
  EXPECT_EQ(files.files["/downloads/a.tar 3.gz"], "onetwo");
  EXPECT_EQ(*first->bytesWritten, 6);
  EXPECT_EQ(page()->loads[1], "https://app.example.com/mail/Inbox/T1.M1?u=123");
  EXPECT_EQ(page()->evaluations[0], R"(find("G1", "usercontent.example");)");
  serve({"x"});
  EXPECT_EQ(files.files["/downloads/-b"], "x");
  serve({});
  EXPECT_EQ(files.files.count("/downloads/b 2"), 1U) << "an empty file is one";
  loop.advance(1s);
  EXPECT_EQ(third->state->kind, Kind::finished);
  EXPECT_EQ(fourth->state->kind, Kind::cancelled);
  EXPECT_EQ(http.opened.size(), 3U) << "what was taken back isn't fetched";
  EXPECT_EQ(webViews.made.size(), 1U);
  EXPECT_TRUE(http.opened[0].headers.empty());
}

TEST_F(AttachmentDownloaderTest, TellsWhyAndGoesOn) {
  found = boost::json::object{{"_linkCount", 2}};
  EXPECT_EQ(endOf("a"), "Could not find the attachment link in the email. (30 s)");
  EXPECT_EQ(
      log.count(R"(debug network: AttachmentDownloader: attempt 54 — link not found yet ({"_linkCount":2}))"),
      1);
  EXPECT_FALSE(log.anyStartsWith("debug network: AttachmentDownloader: attempt 55"));

  const std::string signedOut = "Nobody is signed in. Sign in to your mail in a tab, then try again.";
  signIn = true;
  EXPECT_EQ(endOf("a"), signedOut + " (1 s)");
  signIn = false;
  EXPECT_EQ(endOf("a",
                  [this] {
                    page()->goTo("https://login.example.net/");
                    page()->commit();
                  }),
            signedOut + " (1 s)");
  client.delay = 10s; // the client hopes for a new token
  signIn = true;
  EXPECT_EQ(endOf("a"), signedOut + " (3 s)");
  signIn = false;
  EXPECT_EQ(endOf("a"), "Could not find the attachment link in the email. (50 s)");
  client.delay = {};
  client.signInShown = true;
  EXPECT_EQ(endOf("a"), signedOut + " (0 s)");
  client.signInShown = false;

  EXPECT_EQ(endOf("a", [&] { page()->delegate->webProcessDidTerminate(true); }),
            "The page's process has ended. Try again. (0 s)");
  const auto old = webViews.onMake;
  webViews.onMake = [old](support::FakeWebView& view) {
    old(view);
    view.hangs = true;
  };
  EXPECT_EQ(endOf("a"), "Could not find the attachment link in the email. (66 s)");
  EXPECT_EQ(webViews.made.size(), 2U);

  webViews.onMake = old;
  for (const auto* link :
       {"", "no link", "http://x.usercontent.example/", "https://evil.example/", "file:///etc"}) {
    found = link;
    EXPECT_EQ(endOf("a"), "Download failed (unexpected response). (0 s)") << link;
  }
  EXPECT_EQ(webViews.made.size(), 3U) << "one that hangs isn't used again";

  found = "https://x.usercontent.example/it";
  http.streamStatus = 404;
  EXPECT_EQ(endOf("a"), "Download failed (HTTP 404). (0 s)");
  http.streamStatus = 200;
  EXPECT_EQ(endOf("a"), "timed out (60 s)") << "the server says nothing more";
  EXPECT_EQ(log.count("error network: AttachmentDownloader: failed to download a: timed out"), 1);
  served = http.feeds.size();
  auto longer = info("G1", "a");
  longer.size = 5;
  const auto torn = downloader.download(longer);
  serve({"four"});
  EXPECT_EQ(torn->state->error, "The connection broke off before the end of the file. Try again.");
  files.full = true;
  served = http.feeds.size();
  const auto item = downloader.download(info("G1", "a"));
  serve({"x"});
  EXPECT_EQ(item->state->error, "The disk is full.");
  EXPECT_EQ(newFiles.alive.use_count(), 1);
  EXPECT_TRUE(files.files.empty());
}

TEST_F(AttachmentDownloaderTest, EndsWhereItIsCancelled) {
  for (const auto time : {0ms, 1ms, 600ms, 20000ms}) {
    found = time == 20s ? platform::ScriptResult("https://x.usercontent.example/it") : boost::json::value();
    const auto item = downloader.download(info("G1", "a"));
    loop.advance(time);
    EXPECT_EQ(newFiles.alive.use_count(), time == 20s ? 2 : 1);
    item->cancel();
    loop.runUntilIdle();
    EXPECT_EQ(newFiles.alive.use_count(), 1);
    const auto next = downloader.download(info("G2", "b"));
    EXPECT_EQ(next->state->kind, Kind::downloading) << "the queue is empty";
    loop.advance(5min);
  }
  EXPECT_FALSE(log.anyStartsWith("error network: AttachmentDownloader: failed to download a"));
}

} // namespace
} // namespace ondrel::attachments
