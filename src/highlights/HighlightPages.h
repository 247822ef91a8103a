#pragma once

#include "async/Scope.h"
#include "async/Task.h"
#include "highlights/ContainerReport.h"
#include "highlights/Conversation.h"
#include "highlights/ThreadLists.h"
#include "platform/FrameInfo.h"

#include <cstdint>
#include <deque>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace ondrel::web {
class WindowViewModel;
}

namespace ondrel::highlights {

class HighlightStore;

// What the tabs' pages show: which conversation, and in which frame which of its messages. Each frame that
// shows messages is sent the highlights of each. Main thread only.
class HighlightPages {
 public:
  using Tab = std::shared_ptr<web::WindowViewModel>;

  // Both outlive it.
  HighlightPages(jmap::MailQueries& mail, HighlightStore& store) : store_(store), lists_(mail) {}

  // What a page reports; each report repeats the frame's whole state.
  void messageChanged(const Tab& tab, const std::string& internalId);
  void containersChanged(const Tab& tab, const platform::FrameInfo& frame, ContainerReport report);
  void hostReady(const Tab& tab, const platform::FrameInfo& frame);

  // One report, and the conversation that was in view then.
  struct Shown {
    ContainerReport report;
    ConversationPtr conversation; // null where the tab's address names none
    std::string threadId;         // in the tab's address then

    // Of each container; empty while nothing is known.
    std::vector<std::optional<std::string>> messageIds() const;
    // Absent when the container shows none, or none that is known.
    std::optional<std::string> messageIn(std::int64_t container) const;
    // Nothing more will be known of it.
    bool isSettled() const;
  };
  // The report of that number, or the frame's last one for a page that doesn't number. Absent when it is none
  // of the last few.
  std::optional<Shown> shown(const Tab& tab, const platform::FrameInfo& frame, std::int64_t number);
  // Ends when the conversation's messages are known or can't be had. Asks once more for those that could not
  // be had before.
  async::Task<void> settled(std::weak_ptr<web::WindowViewModel> tab, Shown shown);

  // Sends the tab's frames their highlights anew.
  void push(const Tab& tab);
  // Takes these highlights' marks off the frame.
  void takeOff(const Tab& tab, const platform::FrameInfo& frame, const std::vector<std::string>& ids);
  // All marks, off all pages.
  void takeAllOff();

 private:
  using WeakTab = std::weak_ptr<web::WindowViewModel>;

  struct Frame {
    platform::FrameInfo info;
    bool isReady = false;
    std::deque<Shown> shown; // the last few reports
  };
  struct View {
    std::string openId; // the email that the page has reported last
    ConversationPtr conversation;
    std::map<std::uint64_t, Frame> frames; // by the frame's id
  };

  View& viewOf(const Tab& tab);
  void open(const Tab& tab, View& view, const std::string& internalId);
  async::Task<void> ask(WeakTab weakTab, ConversationPtr conversation);
  void push(const Tab& tab, const Frame& frame);
  async::Task<void> evaluate(WeakTab weakTab, platform::FrameInfo frame, std::string call);

  HighlightStore& store_;
  ThreadLists lists_;
  std::map<WeakTab, View, std::owner_less<WeakTab>> views_;
  async::Scope scope_;
};

} // namespace ondrel::highlights
