#include "base/Text.h"
#include "support/WebKitTest.h"

#include <fstream>
#include <iterator>
#include <unistd.h>

namespace ondrel::tests {

class DownloadsTest : public WebKitTest {
 protected:
  void SetUp() override {
    WebKitTest::SetUp();
    std::filesystem::create_directory(chosen_ = folder_ / "chosen");
    server_.serve("/file", {"the content",
                            "application/x-thing",
                            {{"Content-Disposition", "ATTACHMENT; filename=\"../../evil.txt\""}}});
    delegate_.onResponse = [](const NavigationResponse& response) {
      const auto isAttachment =
          response.contentDisposition && response.contentDisposition->starts_with("ATT");
      return isAttachment ? NavigationPolicy::download : NavigationPolicy::allow;
    };
    delegate_.onDownload = [this](const std::shared_ptr<Download>& download) {
      if (takesDestination_)
        download->setDestinationHandler(
            [this](Download::DestinationRequest request, Download::DestinationReply reply) {
              requests_.push_back(request);
              reply_.emplace(std::move(reply));
            });
      observations_.push_back(download->finished.subscribe([this] { outcomes_.emplace_back("finished"); }));
      observations_.push_back(
          download->failed.subscribe([this](const std::string&) { outcomes_.emplace_back("failed"); }));
    };
  }
  void loadFile() {
    loadHtml("<a id=a download='named.txt' href='/plain'>x</a>");
    view().load(server_.url("/file"));
  }
  static std::string content(const std::filesystem::path& path) {
    std::ifstream file(path);
    return {std::istreambuf_iterator(file), {}};
  }

  std::filesystem::path chosen_; // what the user has chosen is in here
  bool takesDestination_ = true;
  std::vector<Download::DestinationRequest> requests_;
  std::optional<Download::DestinationReply> reply_;
  std::vector<std::string> outcomes_;
  std::vector<base::Subscription> observations_;
};

using Outcomes = std::vector<std::string>;

TEST_F(DownloadsTest, AttachmentIsWrittenWhereTheReplySays) {
  loadFile();
  ASSERT_TRUE(waitFor([&] { return reply_.has_value(); }));
  EXPECT_FALSE(delegate_.responses.back().canShowMimeType);
  EXPECT_EQ(requests_[0].mimeType, "application/x-thing");
  EXPECT_NE(requests_[0].suggestedFileName.find("evil.txt"), std::string::npos);

  runFor(100ms); // the answer may take its time
  EXPECT_EQ(outcomes_, Outcomes{});
  const auto path = chosen_ / "chosen \xC3\xA9.txt";
  std::move (*reply_)(path.string());
  ASSERT_TRUE(waitFor([&] { return !outcomes_.empty(); }));
  EXPECT_EQ(outcomes_, Outcomes{"finished"});
  EXPECT_EQ(content(path), "the content");
  ASSERT_TRUE(waitFor([&] { return delegate_.errors.size() == 1; }));
  EXPECT_TRUE(delegate_.errors[0].isInterruptedByPolicy());
  EXPECT_EQ(access(path.c_str(), X_OK), -1);
  EXPECT_EQ(delegate_.downloads[0]->progress().bytesWritten, 11);
  EXPECT_EQ(delegate_.downloads[0]->progress().totalBytes, 11);
  EXPECT_EQ(delegate_.downloads[0].use_count(), 1) << "an ended download holds itself no more";
}

TEST_F(DownloadsTest, LinkWithDownloadAttributeArrivesToo) {
  server_.serve("/plain", {"plain", "text/plain", {}, 200});
  loadHtml("<a id=a download='named.txt' href='/plain'>x</a>");
  evaluate("a.click(); 0");
  ASSERT_TRUE(waitFor([&] { return reply_.has_value(); }));
  EXPECT_EQ(requests_[0].suggestedFileName, "named.txt");
  EXPECT_EQ(view().url(), server_.url("/page"));
  // The engine writes under a longer name first.
  const auto path = folder_ / base::safeFileName(std::string(255, 'n') + ".txt", "");
  std::move (*reply_)(path.string());
  ASSERT_TRUE(waitFor([&] { return !outcomes_.empty(); }));
  EXPECT_EQ(content(path), "plain");
}

TEST_F(DownloadsTest, ReplacesAFileByAWholeOneOnly) {
  const auto existing = chosen_ / "existing";
  std::ofstream(existing) << "old";
  const auto begin = [&](bool stalls) {
    // The engine looks at so much before it asks what to do with it.
    server_.serve("/file", {std::string(4096, 'x'),
                            "application/x-thing",
                            {{"Content-Disposition", "ATTACHMENT"}},
                            200,
                            stalls});
    outcomes_.clear();
    reply_.reset();
    loadFile();
    ASSERT_TRUE(waitFor([&] { return reply_.has_value(); }));
    std::move (*reply_)(existing.string());
  };
  const auto isAlone = [&] { return std::distance(std::filesystem::directory_iterator(chosen_), {}) == 1; };
  begin(true);
  ASSERT_TRUE(waitFor([&] { return delegate_.downloads.back()->progress().bytesWritten == 4096; }));
  EXPECT_FALSE(isAlone()) << "it is written already";
  delegate_.downloads.back()->cancel();
  ASSERT_TRUE(waitFor([&] { return !outcomes_.empty(); }));
  EXPECT_EQ(outcomes_, Outcomes{"failed"});
  EXPECT_EQ(content(existing), "old");
  EXPECT_TRUE(isAlone());

  begin(false);
  ASSERT_TRUE(waitFor([&] { return !outcomes_.empty(); }));
  EXPECT_EQ(outcomes_, Outcomes{"finished"});
  EXPECT_EQ(content(existing), std::string(4096, 'x'));

  begin(true);
  ASSERT_TRUE(waitFor([&] { return delegate_.downloads.back()->progress().bytesWritten == 4096; }));
  EXPECT_FALSE(isAlone());
  view_.reset();
  factory_.reset();
  EXPECT_TRUE(isAlone()) << "the end of the program leaves nothing behind";
}

TEST_F(DownloadsTest, BlobThatAScriptHandsOverArrives) {
  loadHtml(R"(<script>
    function save(how) {
      const link = document.createElement('a');
      link.href = URL.createObjectURL(new Blob(['made here'], {type: 'text/plain'}));
      link.download = 'made.txt';
      if (how === 'attached')
        document.body.append(link);
      link.click();
      link.remove();
      URL.revokeObjectURL(link.href);
    }</script>)");
  for (const std::string call : {"save('attached')", "save('detached')", "setTimeout(save, 1500)"}) {
    reply_.reset();
    evaluate(call + "; 0");
    ASSERT_TRUE(waitFor([&] { return reply_.has_value(); })) << call;
    EXPECT_EQ(requests_.back().suggestedFileName, "made.txt");
  }
}

// What the rules of a main frame stand on.
TEST_F(DownloadsTest, BlobIsKnownAsAPageAFrameOrADownload) {
  delegate_.onResponse = [](const NavigationResponse& response) {
    return response.isMainFrame && !response.isHttp ? NavigationPolicy::cancel : NavigationPolicy::allow;
  };
  loadHtml("<iframe id=f></iframe><a id=a download=x.txt>x</a><script>"
           "const blob = (type) => URL.createObjectURL(new Blob(['<p>blob'], {type}));"
           "f.src = blob('text/html'); f.onload = () => { window.framed = true }</script>");
  EXPECT_TRUE(waitFor([&] { return evaluateToText("window.framed") == "true"; }));
  EXPECT_FALSE(delegate_.responses.back().isMainFrame);

  evaluate("location.href = blob('text/html'); 0");
  EXPECT_TRUE(
      waitFor([&] { return delegate_.responses.back().isMainFrame && !delegate_.responses.back().isHttp; }));
  runFor(100ms);
  EXPECT_EQ(view().url(), server_.url("/page"));
  EXPECT_EQ(evaluateToText("window.framed"), "true") << "the page must still be there";

  evaluate("a.href = blob('text/plain'); a.click(); 0");
  EXPECT_TRUE(waitFor([&] { return reply_.has_value(); }));
}

TEST_F(DownloadsTest, NothingIsWrittenWithoutAGoodAnswer) {
  const std::optional<std::string> answers[] = {std::nullopt, "relative", "", chosen_.string()};
  for (const auto& answer : answers) {
    outcomes_.clear();
    reply_.reset();
    loadFile();
    ASSERT_TRUE(waitFor([&] { return reply_.has_value(); }));
    std::move (*reply_)(answer);
    ASSERT_TRUE(waitFor([&] { return !outcomes_.empty(); })) << answer.value_or("nothing");
    EXPECT_EQ(outcomes_, Outcomes{"failed"}) << answer.value_or("nothing");
  }
  EXPECT_TRUE(std::filesystem::is_empty(chosen_));

  // The page of an error is no file.
  server_.serve("/gone", {"Gone.", "text/html", {{"Content-Disposition", "ATTACHMENT"}}, 410});
  outcomes_.clear();
  reply_.reset();
  view().load(server_.url("/gone"));
  ASSERT_TRUE(waitFor([&] { return !outcomes_.empty(); }));
  EXPECT_FALSE(reply_);
  EXPECT_EQ(delegate_.downloads.back()->suggestedFileName(), "gone.html");

  takesDestination_ = false;
  outcomes_.clear();
  loadFile();
  ASSERT_TRUE(waitFor([&] { return !outcomes_.empty(); }));
  EXPECT_EQ(outcomes_, Outcomes{"failed"});
}

} // namespace ondrel::tests
