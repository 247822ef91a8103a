#pragma once

#include "attachments/AttachmentDownloader.h"
#include "attachments/FilesViewModel.h"
#include "jmap/mail/MailQueries.h"
#include "settings/AppSettings.h"
#include "support/FakeDesktop.h"
#include "support/FakeDocumentDecoder.h"
#include "support/FakeDocuments.h"
#include "support/FakeHttpClient.h"
#include "support/FakeJMAPClient.h"
#include "support/FakeNewFiles.h"
#include "support/FakeWebView.h"
#include "support/TestSite.h"

#include <fmt/format.h>

#include <memory>
#include <string>
#include <vector>

namespace ondrel::support {

// What the browser of attachments stands on, on fakes. Each page has the link to whatever is looked for, and
// the bytes at a link are "data of " and the link.
struct FakeAttachments {
  // One attachment of one email of the service.
  struct File {
    std::string name;
    std::string type = "image/png";
    std::string subject = "Subject";
    std::int64_t size = 1000;
  };

  FakeAttachments() {
    client.answer("Email/get",
                  FakeJMAPClient::reply({R"({"list":[{"mailboxIds":{"B1":true},"threadId":"T1"}]})"}));
    client.answer("Mailbox/get",
                  FakeJMAPClient::reply({R"({"list":[{"id":"B1","name":"Inbox","role":"inbox"}]})"}));
    webViews.onMake = [](FakeWebView& view) {
      view.commitsByItself = true;
      view.answer = [](const std::string& source) -> platform::ScriptResult {
        if (source.starts_with("find("))
          return "https://x.usercontent.example/it";
        return false; // no sign-in is shown
      };
    };
    http.answer = [](const auto& request) { return FakeHttpClient::ok("data of " + request.url); };
  }

  // A page behind those before; one from 0 on takes the place of all. Emails with so many attachments each,
  // the first of them M<first> with the blobs G<first>-0, ...; of 2025-06-01.
  void addPage(int first, const std::vector<std::vector<File>>& emails, int total) {
    std::string ids, list;
    for (std::size_t i = 0; i < emails.size(); ++i) {
      const auto id = "M" + std::to_string(first + static_cast<int>(i));
      std::string parts;
      for (std::size_t j = 0; j < emails[i].size(); ++j) {
        const auto& file = emails[i][j];
        parts += fmt::format(
            R"({}{{"partId":"{}","blobId":"G{}-{}","name":"{}","type":"{}","size":{},"disposition":"attachment","cid":null}})",
            j ? "," : "", j + 2, id.substr(1), j, file.name, file.type, file.size);
      }
      ids += fmt::format(R"({}"{}")", i ? "," : "", id);
      list += fmt::format(
          R"({}{{"id":"{}","subject":"{}","from":[{{"name":"Ann","email":"ann@x.example"}}],"receivedAt":"2025-06-01T08:00:00Z","attachments":[{}]}})",
          i ? "," : "", id, emails[i].empty() ? "" : emails[i][0].subject, parts);
    }
    const auto answer = first == 0 ? &FakeJMAPClient::answerOnly : &FakeJMAPClient::answer;
    (client.*answer)("Email/query", FakeJMAPClient::reply(
                                        {fmt::format(R"({{"ids":[{}],"total":{},"position":0}})", ids, total),
                                         fmt::format(R"({{"list":[{}]}})", list)}));
  }

  std::unique_ptr<attachments::FilesViewModel> makeModel() {
    return std::make_unique<attachments::FilesViewModel>(attachments::FilesServices{
        .mail = mail,
        .downloader = downloader,
        .types = types,
        .directories = files,
        .files = files,
        .printer = printer,
        .frontWindow = [] { return nullptr; },
        .watchDownload = [this](const auto&) { ++watched; },
        .openMessage = [this](const std::string& url,
                              const std::string& id) { opened.push_back(url + " " + id); }});
  }

  FakeDefaults defaults;
  settings::AppSettings settings{defaults, testSite()};
  FakeJMAPClient client;
  jmap::MailQueries mail{client, settings, [] {}};
  FakeWebViewFactory webViews;
  FakeHttpClient http;
  FakeFiles files;
  FakeNewFiles newFiles{files};
  FakeDocumentDecoder decoder;
  FakePrinter printer;
  FakeContentTypes types;
  const std::string script = "find";
  attachments::AttachmentDownloader downloader{{.mail = mail,
                                                .settings = settings,
                                                .webViews = webViews,
                                                .linkScript = script,
                                                .http = http,
                                                .newFiles = newFiles,
                                                .files = files,
                                                .directories = files,
                                                .decoder = decoder,
                                                .types = types}};
  std::vector<std::string> opened; // messages, by address and id
  int watched = 0;                 // downloads
};

} // namespace ondrel::support
