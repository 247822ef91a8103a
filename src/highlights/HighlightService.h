#pragma once

#include "async/Scope.h"
#include "async/Task.h"
#include "base/Event.h"
#include "base/Log.h"
#include "highlights/HighlightPages.h"
#include "highlights/file/HighlightAnchor.h"
#include "highlights/file/PersistedHighlight.h"
#include "jmap/mail/MailQueries.h"

#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <set>
#include <string>
#include <utility>
#include <vector>

namespace ondrel::app {
class WindowManager;
}

namespace ondrel::platform {
class Panels;
}

namespace ondrel::settings {
class AppSettings;
}

namespace ondrel::web {
class ScriptMessageRouter;
}

namespace ondrel::highlights {

class HighlightStore;

// The program's half of highlighting: saves what pages highlight in their messages, marks the highlighted
// threads in the mailbox lists and labels them on the server. One for the process, main thread only.
class HighlightService {
 public:
  // All outlive it. It takes the messages of the pages' highlight scripts while it lives.
  HighlightService(app::WindowManager& windowManager, web::ScriptMessageRouter& messages,
                   jmap::MailQueries& mail, HighlightStore& store, settings::AppSettings& settings,
                   platform::Panels& panels);

  // Asks first.
  async::Task<void> removeAllHighlights();

  // Sends all highlighted threads to every tab, in turn; ends without waiting for a page that hangs.
  async::Task<void> pushMailboxMarksToAllWindows();
  // Gets how many of the threads are done; false ends the work.
  using TagProgress = std::function<bool(std::size_t done)>;
  // Puts each of these threads into the tag's mailbox or takes it out, as its highlights say.
  async::Task<void> syncAllTags(std::set<std::string> threadIds, TagProgress progress = nullptr);

  HighlightStore& store() { return store_; }

 private:
  using Tab = HighlightPages::Tab;
  using Emails = std::vector<jmap::ThreadEmailInfo>;
  // The work outlives no tab: it looks again after each suspension.
  using WeakTab = std::weak_ptr<web::WindowViewModel>;

  // A container in a report of a frame, as a page names it.
  struct Place {
    WeakTab tab;
    platform::FrameInfo frame;
    std::int64_t report = 0; // its number; 0 for the last one
    std::int64_t container = 0;
  };
  // The message there; without an id it isn't known and won't be.
  struct Message {
    std::string threadId;
    std::optional<std::string> id;
    Emails threadEmails;
  };
  static Message messageAt(const HighlightPages::Shown& shown, std::int64_t container);
  using WithMessage = std::function<void(const Message& message)>;

  void takeMessages(web::ScriptMessageRouter& messages);
  void create(const Place& place, const std::string& anchorJSON);
  void remove(const Place& place, const std::string& id);
  void clearOrphaned(const Place& place, const std::string& idsJSON);

  // At once when it is known; otherwise when the server has answered, though the tab may have gone by then.
  void withMessageAt(const Place& place, WithMessage use);
  async::Task<void> waitForMessage(Place place, HighlightPages::Shown shown, WithMessage use);
  void save(const Place& place, HighlightAnchor anchor, double createdAt, const Message& message);
  void notSaved(const Place& place, const HighlightAnchor& anchor);
  void removeFrom(const Place& place, const Message& message, const std::vector<std::string>& ids);
  void bringBack(const Place& place, const Message& message, const std::vector<PersistedHighlight>& removed);

  // The saved highlights of a message of that thread have changed.
  void highlightsChanged(Emails threadEmails);
  // All highlighted threads, as pages and the log get them.
  struct Marks {
    std::size_t count = 0;
    std::string json;
    std::string joined;
  };
  const Marks& marks();
  async::Task<void> pushMailboxMarks(WeakTab weakTab);
  async::Task<void> syncTag(Emails threadEmails);
  async::Task<std::optional<std::string>> resolveTagMailbox(std::string name);

  app::WindowManager& windowManager_;
  jmap::MailQueries& mail_;
  HighlightStore& store_;
  settings::AppSettings& settings_;
  platform::Panels& panels_;
  const base::Logger logger_{"system"};
  HighlightPages pages_;
  std::set<std::string> waiting_; // ids of highlights that are on the page and not saved yet
  std::optional<std::pair<std::string, std::string>> cachedTagMailbox_; // name and id
  std::optional<Marks> marks_;                                          // until the store changes
  base::Subscription storeChanged_;
  std::vector<base::Subscription> messages_;
  async::Scope scope_;
};

} // namespace ondrel::highlights
