// Downloads from a tab's page, and what is told of them.
#include "CoordinatorTest.h"

namespace ondrel::web {
namespace {

using namespace std::chrono_literals;
using Kind = DownloadState::Kind;

class TabDownloadsTest : public CoordinatorTest {
 protected:
  using Download = std::shared_ptr<support::FakeDownload>;

  // The user has chosen a place for it.
  Download begin(const std::string& path = "/downloads/report.pdf") {
    auto download = take();
    shell.panels.savePath = path;
    ask(download);
    shell.settle();
    return download;
  }
  Download take() {
    auto download = std::make_shared<support::FakeDownload>();
    engine().didBecomeDownload(download);
    return download;
  }
  void ask(const Download& download, const std::string& name = "report.pdf") {
    download->handler({name, "application/pdf"},
                      {[this](auto path) { destinations.push_back(std::move(path)); }, std::nullopt});
  }
  DownloadItem& last() { return *model->downloads->back(); }
  const std::vector<platform::NotificationRequest>& notified() { return shell.notificationCenter.requests; }

  std::vector<std::optional<std::string>> destinations;
};

TEST_F(TabDownloadsTest, AreShownAndGoSomeTimeAfterTheirEnd) {
  const auto download = take();
  shell.panels.savePath = "/downloads/report.pdf";
  ask(download, "../\xE2\x80\xAEreport.pdf");
  shell.settle();
  EXPECT_EQ(destinations.back(), "/downloads/report.pdf");
  EXPECT_EQ(shell.panels.savePanels[0].proposedName, "-report.pdf");
  EXPECT_EQ(shell.panels.savePanels[0].mimeTypes, Calls{"application/pdf"});
  const auto item = model->downloads->front();
  EXPECT_EQ(item->filename, "report.pdf");
  for (int i = 0; i <= 1000; ++i) {
    download->current = {i / 1000.0, i, 1000};
    download->progressed.emit();
    shell.loop.advance(1ms);
  }
  EXPECT_GE(*item->bytesWritten, 950) << "what came last is shown too";
  EXPECT_LE(download->looks, 21) << "20 times a second and no more";
  download->finished.emit();
  EXPECT_EQ(*item->bytesWritten, 1000);
  EXPECT_FALSE(*item->canBeCancelled);
  shell.loop.advance(399ms);
  EXPECT_EQ(item->state->kind, Kind::downloading) << "the bar is seen full first";
  shell.loop.advance(1ms);
  EXPECT_EQ(item->state->kind, Kind::finished);
  shell.loop.advance(3599ms);
  EXPECT_EQ(model->downloads->size(), 1U);
  shell.loop.advance(1ms);
  EXPECT_TRUE(model->downloads->empty());
  EXPECT_TRUE(notified().empty()) << "the user has seen it in the window";

  begin()->failed.emit("network down");
  EXPECT_EQ(*last().state, (DownloadState{Kind::failed, "network down"}));
  shell.loop.advance(3s);
  last().isHeld.set(true);
  shell.loop.advance(1h);
  EXPECT_EQ(model->downloads->size(), 1U) << "the pointer is there";
  last().isHeld.set(false);
  shell.loop.advance(1s);
  EXPECT_TRUE(model->downloads->empty());
}

TEST_F(TabDownloadsTest, EndAsTheUserOrTheServerWants) {
  const auto download = begin();
  last().cancel();
  EXPECT_EQ(last().state->kind, Kind::cancelled) << "at once";
  shell.settle();
  EXPECT_EQ(last().state->kind, Kind::cancelled) << "the engine calls it a failure";

  take()->failed.emit("too early for the panel");
  EXPECT_EQ(last().state->error, "too early for the panel");
  const auto open = take();
  ask(open);
  open->failed.emit("while the panel is open");
  shell.settle();
  EXPECT_EQ(last().state->error, "while the panel is open");
  EXPECT_EQ(destinations.back(), std::nullopt) << "no place any more";
  EXPECT_EQ(model->downloads->size(), 3U);

  shell.panels.savePath = std::nullopt;
  const auto refused = take();
  ask(refused, "");
  shell.settle();
  EXPECT_EQ(destinations.back(), std::nullopt);
  refused->failed.emit("cancelled");
  EXPECT_EQ(model->downloads->size(), 3U);
}

TEST_F(TabDownloadsTest, AskInTurnAndNotWithoutEnd) {
  shell.panels.savePath = "/downloads/report.pdf";
  std::vector<Download> downloads;
  for (int i = 0; i < 20; ++i)
    ask(downloads.emplace_back(take()), std::to_string(i));
  EXPECT_EQ(destinations, std::vector<std::optional<std::string>>(9)) << "one is asked for, and ten wait";
  downloads[1]->failed.emit("while it waited");
  EXPECT_EQ(last().state->error, "while it waited") << "at once";
  shell.loop.runUntil([&] { return destinations.size() > 9; }, 1s);
  EXPECT_EQ(shell.panels.savePanels.size(), 1U) << "the next comes after the answer";
  shell.settle();
  EXPECT_EQ(shell.panels.savePanels.size(), 10U);
  EXPECT_EQ(shell.panels.savePanels.back().proposedName, "10");
  ask(take(), "later");
  shell.settle();
  EXPECT_EQ(shell.panels.savePanels.back().proposedName, "later");
}

TEST_F(TabDownloadsTest, AreToldByNotificationsWhereNobodyLooks) {
  const auto finished = begin("/downloads/a\nb.pdf");
  const auto failed = begin();
  const auto cancelled = begin();
  last().cancel();
  const auto unasked = take();
  model->window.lock()->close(); // they go on
  shell.settle();
  EXPECT_FALSE(unasked->handler) << "nobody is left to be asked";
  finished->finished.emit();
  failed->failed.emit("Disk full.");
  shell.settle();
  ASSERT_EQ(notified().size(), 2U);
  EXPECT_EQ(notified()[0].content.title + "|" + notified()[0].content.body, "Download complete|a b.pdf");
  EXPECT_EQ(notified()[1].content.title + "|" + notified()[1].content.body,
            "Download failed|report.pdf: Disk full.");
  for (const auto number : {0U, 1U})
    shell.notificationCenter.respond(number, platform::NotificationResponse::defaultAction);
  shell.settle();
  EXPECT_EQ(shell.uriLauncher.files, Calls{"show /downloads/a\nb.pdf"});
}

} // namespace
} // namespace ondrel::web
