#pragma once

#include "highlights/HighlightExport.h"
#include "highlights/file/HighlightStore.h"
#include "jmap/mail/MailQueries.h"
#include "support/FakeJMAPClient.h"
#include "support/FakeTextFormatting.h"
#include "support/TestShell.h"

#include <gtest/gtest.h>

#include <string>

namespace ondrel::highlights {

// The highlights' file and their export on fakes, with an account whose messages are in its inbox.
class TransferWorld : public testing::Test {
 protected:
  TransferWorld() {
    client.answer("Mailbox/get", support::FakeJMAPClient::reply({R"({"list":[{"id":"B","name":"Inbox"}]})"}));
  }
  // The server has the message with that number.
  void resolve(const std::string& number, const std::string& subject) {
    client.answer("Email/query", found(number, subject));
  }
  static std::string found(const std::string& number, const std::string& subject) {
    return support::FakeJMAPClient::reply(
        {R"({"ids":[]})", R"({"list":[{"id":"M)" + number + R"(","messageId":[")" + number +
                              R"(@x"],"subject":")" + subject +
                              R"(","mailboxIds":{"B":true},"threadId":"T1"}]})"});
  }

  support::TestShell shell;
  support::FakeJMAPClient client;
  jmap::MailQueries mail{client, shell.settings, [] {}};
  support::FakeTextFormatting formatting;
  HighlightStore store{shell.files, shell.files};
  HighlightExport highlightExport{{.store = store,
                                   .mail = mail,
                                   .settings = shell.settings,
                                   .application = shell.application,
                                   .panels = shell.panels,
                                   .files = shell.files,
                                   .textFormatting = formatting,
                                   .iconPNG = "png"}};
};

} // namespace ondrel::highlights
