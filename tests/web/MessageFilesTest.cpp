// Messages as files in the Downloads folder.
#include "web/MessageFiles.h"

#include "CoordinatorTest.h"

#include <string>
#include <utility>

namespace ondrel::web {
namespace {

using namespace std::chrono_literals;
using support::FakeHttpClient;

class MessageFilesTest : public CoordinatorTest {
 protected:
  static constexpr auto url = "https://1.usercontent.example/source?download=1";

  // The page asks for it under its title.
  void ask(const std::string& title) {
    view->currentTitle = title;
    platform::NewWindowRequest request;
    request.action.url = url;
    engine().createWebView(std::move(request));
  }
  std::vector<std::string> notified() const {
    std::vector<std::string> texts;
    for (const auto& request : shell.notificationCenter.requests)
      texts.push_back(request.content.title + ": " + request.content.body);
    return texts;
  }
};

TEST_F(MessageFilesTest, HaveTheTitleAsTheirNameAndStayInTheFolder) {
  shell.http.answer = [](const auto&) { return FakeHttpClient::ok("Subject: Plans\r\n\r\nWell.\r\n"); };
  const std::pair<std::string, std::string> cases[] = {
      {"Plans", "Plans.eml"}, {"Re: 1/2", "Re: 1-2.eml"}, {"../../../etc/passwd", "-.-.-etc-passwd.eml"},
      {"", "message.eml"},    {"..", "message.eml"},
  };
  for (const auto& [title, name] : cases) {
    shell.files.files.clear();
    shell.notificationCenter.requests.clear();
    ask(title);
    shell.settle();
    EXPECT_EQ(shell.files.files["/downloads/" + name], "Subject: Plans\r\n\r\nWell.\r\n") << title;
    EXPECT_EQ(shell.files.files.size(), 1U) << title;
    EXPECT_EQ(notified(),
              Calls{"Download complete: File '" + title + ".eml' saved in your downloads folder"});
  }

  const auto& request = shell.http.requests.back();
  EXPECT_EQ(request.method + " " + request.url, std::string("GET ") + url);
  EXPECT_TRUE(request.headers.empty()) << "the address is all that the server needs";
}

// The file of that name that may be there already stays.
TEST_F(MessageFilesTest, AreNotWrittenWhenTheyCantBeFetched) {
  const FakeHttpClient::Answer failures[] = {
      [](const auto&) { return platform::HttpResponse{404, {}, "No such message."}; },
      [](const auto&) { return FakeHttpClient::ok("\xFF\xD8 a picture"); },
      [](const auto&) { return std::unexpected(FakeHttpClient::failure("offline")); },
  };
  for (const auto& failure : failures) {
    shell.files.files = {{"/downloads/Plans.eml", "earlier"}};
    shell.notificationCenter.requests.clear();
    shell.http.answer = failure;
    ask("Plans");
    shell.settle();
    EXPECT_EQ(shell.files.files.at("/downloads/Plans.eml"), "earlier");
    EXPECT_EQ(notified().size(), 1U) << "this step always comes";
    EXPECT_EQ(model->downloads->back()->state->kind, DownloadState::Kind::failed) << "but the row knows";
  }
  shell.files.full = true;
  shell.http.answer = [](const auto&) { return FakeHttpClient::ok("new"); };
  ask("Plans");
  shell.settle();
  EXPECT_TRUE(model->downloads->back()->state->error.contains("disk is full"));
}

TEST_F(MessageFilesTest, CanBeCancelledUntilTheyAreBeingWritten) {
  shell.newFiles.delay = 1s;
  ask("Plans");
  const auto early = model->downloads->back();
  early->cancel();
  shell.settle();
  EXPECT_TRUE(shell.files.files.empty());
  EXPECT_TRUE(notified().empty()) << "whoever has cancelled it knows";
  ask("Plans");
  shell.settle();
  const auto late = model->downloads->back();
  EXPECT_FALSE(*late->canBeCancelled);
  late->cancel();
  shell.loop.advance(2s);
  EXPECT_EQ(late->state->kind, DownloadState::Kind::finished);
}

TEST_F(MessageFilesTest, AreSavedAlthoughTheTabClosesMeanwhile) {
  ask("Plans");
  shell.application.all.front()->close();
  shell.settle();
  EXPECT_TRUE(shell.files.files.contains("/downloads/Plans.eml"));
}

} // namespace
} // namespace ondrel::web
