#pragma once

#include "platform/linux/glib/Connection.h"
#include "platform/linux/glib/Ref.h"
#include "webext/MessageFlow.h"
#include "webext/UserScript.h"

#include <webkit/webkit-web-process-extension.h>

#include <cstdint>
#include <map>
#include <memory>
#include <string>
#include <vector>

namespace ondrel::webext {

struct BridgeSettings {
  WebKitWebProcessExtension* extension = nullptr; // lives as long as the process
  std::uint64_t largestBody = 0;                  // bytes of JSON
  std::vector<std::string> handlerNames;
};

// The extension's side of one page: gives each document its message handlers, passes their messages to the
// program, and runs in a frame what the program asks for. Lives as long as the page.
class PageBridge {
 public:
  static void attach(WebKitWebPage* page, std::shared_ptr<const BridgeSettings> settings);
  static PageBridge* of(WebKitWebPage* page);

  // A new document begins in the frame; none of its scripts has run yet.
  void documentBegan(WebKitFrame* frame);

 private:
  // The handlers of a document work while its frame shows it.
  struct Frame {
    glib::WeakRef<WebKitFrame> object;
    std::uint64_t document = 0; // the last one that began or spoke
  };
  struct Handler;

  PageBridge(WebKitWebPage* page, std::shared_ptr<const BridgeSettings> settings);
  void forgetDeadFrames();
  glib::Ref<WebKitFrame> frame(std::uint64_t id) const;
  // False for what is dropped.
  bool post(const Handler& handler, JSCValue* body);
  void watchBackgroundOfPage();
  // A state of that size has gone into the page's history.
  void historyGrew(std::uint64_t bytes);
  gboolean receive(WebKitUserMessage* message);
  void evaluate(WebKitUserMessage* message);
  void takeUserScripts(WebKitUserMessage* message);

  WebKitWebPage* page_;
  std::shared_ptr<const BridgeSettings> settings_;
  MessageFlow flow_;
  std::map<std::uint64_t, Frame> frames_;
  glib::WeakRef<WebKitFrame> mainFrame_;
  std::uint64_t lastDocument_ = 0;
  bool toldOfLargeMessage_ = false;
  std::uint64_t historySize_ = 0; // bytes of all states that are not small
  bool toldOfLargeHistory_ = false;
  std::vector<UserScript> userScripts_;
  glib::Connection received_;
  glib::Connection documentRead_;
};

} // namespace ondrel::webext
