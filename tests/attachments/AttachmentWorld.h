#pragma once

#include "async/Scope.h"
#include "async/VirtualEventLoop.h"
#include "attachments/AttachmentDownloader.h"
#include "attachments/FilesViewModel.h"
#include "jmap/mail/MailQueries.h"
#include "settings/AppSettings.h"
#include "support/FakeDesktop.h"
#include "support/FakeDocumentDecoder.h"
#include "support/FakeDocuments.h"
#include "support/FakeHttpClient.h"
#include "support/FakeJMAPClient.h"
#include "support/FakeWebView.h"
#include "support/LogCapture.h"
#include "support/TestSite.h"
#include "web/page/DownloadItem.h"

#include <fmt/format.h>
#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace ondrel::attachments {

using namespace std::chrono_literals;

// The browser on a fake service, in virtual time. Each page has the link to whatever is looked for.
class AttachmentTest : public testing::Test {
 protected:
  using Kind = web::DownloadState::Kind;

  AttachmentTest() {
    client.answer("Email/get", reply({R"({"list":[{"mailboxIds":{"B1":true},"threadId":"T1"}]})"}));
    client.answer("Mailbox/get", reply({R"({"list":[{"id":"B1","name":"Inbox","role":"junk"}]})"}));
    webViews.onMake = [this](support::FakeWebView& view) {
      view.commitsByItself = true;
      view.answer = [this](const std::string& source) {
        return source.starts_with("find(") ? found : signIn;
      };
    };
    http.answer = [](const auto& request) { return support::FakeHttpClient::ok("data of " + request.url); };
  }
  static std::string reply(std::initializer_list<std::string_view> arguments) {
    return support::FakeJMAPClient::reply(arguments);
  }
  static jmap::AttachmentInfo info(const std::string& blob, const std::string& name,
                                   const std::string& type = "image/png") {
    return {"M1-" + blob, "M1", blob, name, type, 5, "S", "F", {}};
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

  async::VirtualEventLoop loop;
  support::LogCapture log;
  support::FakeDefaults defaults;
  settings::AppSettings settings{defaults, support::testSite()};
  support::FakeJMAPClient client;
  jmap::MailQueries mail{client, settings, [] {}};
  support::FakeWebViewFactory webViews;
  support::FakeHttpClient http;
  support::FakeFiles files;
  support::FakeNewFiles newFiles{files};
  support::FakeDocumentDecoder decoder;
  support::FakePrinter printer;
  support::FakeContentTypes types;
  platform::ScriptResult found = "https://x.usercontent.example/it";
  platform::ScriptResult signIn = false; // is shown
  const std::string script = "find";
  AttachmentDownloader downloader{{.mail = mail,
                                   .settings = settings,
                                   .webViews = webViews,
                                   .linkScript = script,
                                   .http = http,
                                   .newFiles = newFiles,
                                   .files = files,
                                   .directories = files,
                                   .decoder = decoder,
                                   .types = types}};
  std::vector<std::string> opened;
  int watched = 0;
  FilesViewModel model{{.mail = mail,
                        .downloader = downloader,
                        .types = types,
                        .directories = files,
                        .files = files,
                        .printer = printer,
                        .frontWindow = [] { return nullptr; },
                        .watchDownload = [this](auto) { ++watched; },
                        .openMessage = [this](const std::string& url,
                                              const std::string& id) { opened.push_back(url + " " + id); }}};
  std::size_t served = 0;
  async::Scope scope;
};

} // namespace ondrel::attachments
