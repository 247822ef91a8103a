#pragma once

#include "platform/UserScript.h"

#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace ondrel::web {

using UserScripts = std::vector<std::shared_ptr<const platform::UserScript>>;

// What the web view of a tab gets: scripts in their order, and message handlers beside "ondrel".
struct WebViewConfiguration {
  UserScripts userScripts;
  std::vector<std::string> additionalMessageHandlerNames;
  bool reportsTitle = true; // one of the scripts tells what the title becomes after a load
};

// The page scripts of the program and the lists in which they are injected. Each script is made once and
// shared by all web views.
class PageScripts {
 public:
  // Gives the text of a script by its name; nothing for a name that the program doesn't ship.
  using Source = std::function<std::optional<std::string>(std::string_view name)>;

  explicit PageScripts(const Source& source);

  // For ordinary tabs.
  const std::shared_ptr<const WebViewConfiguration>& mainConfiguration() const { return main_; }
  // For a window that the page's compose message opens.
  const std::shared_ptr<const WebViewConfiguration>& composeConfiguration() const { return compose_; }
  // For a window that the page opened itself: the scripts of its opener, and what closes it after sending.
  UserScripts popupScripts(const WebViewConfiguration& opener) const;
  // What to evaluate to learn what has become of a letter.
  const std::string& letterState() const { return letterState_; }
  // What opens a message of the page and tells whether that is done: a function of the message's id and its
  // thread's.
  const std::string& selectRow() const { return selectRow_; }
  // What looks for the link to an attachment: a function of the blob's id and of a part of the host's name.
  const std::string& attachmentLink() const { return attachmentLink_; }
  // What makes a page ready for paper, and the other way round: a function of whether it is printed now.
  const std::string& printedMessage() const { return printedMessage_; }

 private:
  std::shared_ptr<const WebViewConfiguration> main_;
  std::shared_ptr<const WebViewConfiguration> compose_;
  UserScripts watchers_;
  std::string letterState_;
  std::string selectRow_;
  std::string attachmentLink_;
  std::string printedMessage_;
};

} // namespace ondrel::web
