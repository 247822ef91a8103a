#pragma once

#include "async/Scope.h"
#include "async/VirtualEventLoop.h"
#include "support/FakeAttachments.h"
#include "support/LogCapture.h"
#include "web/page/DownloadItem.h"

#include <gtest/gtest.h>

#include <string>

namespace ondrel::attachments {

using namespace std::chrono_literals;

// Is there before what needs it.
struct VirtualTime {
  async::VirtualEventLoop loop;
  support::LogCapture log;
};

// The browser on a fake service, in virtual time.
class AttachmentTest : public testing::Test, protected VirtualTime, protected support::FakeAttachments {
 protected:
  using Kind = web::DownloadState::Kind;

  AttachmentTest() {
    webViews.onMake = [this](support::FakeWebView& view) {
      view.commitsByItself = true;
      view.answer = [this](const std::string& source) {
        return source.starts_with("find(") ? found : signIn;
      };
    };
  }
  static std::string reply(std::initializer_list<std::string_view> arguments) {
    return support::FakeJMAPClient::reply(arguments);
  }
  static jmap::AttachmentInfo info(const std::string& blob, const std::string& name,
                                   const std::string& type = "image/png") {
    return {"M1-" + blob, "M1", blob, name, type, 0, "S", "F", {}};
  }
  std::shared_ptr<support::FakeWebView> page() { return webViews.made.back().lock(); }
  // What the next file consists of.
  void serve(std::initializer_list<const char*> pieces) {
    ASSERT_TRUE(loop.runUntil([&] { return http.feeds.size() > served; }, 1min));
    const auto& feed = http.feeds[served++];
    for (const auto* piece : pieces)
      feed->give(std::string(piece));
    feed->end();
    loop.runUntilIdle();
  }

  platform::ScriptResult found = "https://x.usercontent.example/it";
  platform::ScriptResult signIn = false; // is shown
  const std::unique_ptr<FilesViewModel> owned = makeModel();
  FilesViewModel& model = *owned;
  std::size_t served = 0;
  async::Scope scope;
};

} // namespace ondrel::attachments
