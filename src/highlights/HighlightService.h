#pragma once

#include "async/Scope.h"
#include "async/Task.h"
#include "base/Event.h"
#include "base/Log.h"
#include "jmap/MailQueries.h"
#include "web/HighlightReceiver.h"

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

namespace ondrel::highlights {

class HighlightStore;

// The program's half of highlighting: knows which message each container of a page shows, saves what the page
// highlights, sends each page its highlights back, marks the highlighted threads in the mailbox lists and
// labels them on the server. One for the process, main thread only.
class HighlightService final : public web::HighlightReceiver {
 public:
  // All outlive it.
  HighlightService(app::WindowManager& windowManager, jmap::MailQueries& mail, HighlightStore& store,
                   settings::AppSettings& settings, platform::Panels& panels);

  void messageChanged(Tab tab, std::string internalId) override;
  void containersChanged(Tab tab, std::int64_t count, std::optional<std::int64_t> focusedIndex) override;
  void hostReady(Tab tab, platform::FrameInfo frame) override;
  void create(Tab tab, std::string anchorJSON, std::int64_t containerIndex) override;
  void remove(Tab tab, std::string highlightId, std::int64_t containerIndex) override;
  void clearOrphaned(Tab tab, std::string idsJSON, std::int64_t containerIndex) override;
  void mailboxMarkersReady(Tab tab) override;

  // Asks first. Marks that are on screen stay until their message is shown again.
  async::Task<void> removeAllHighlights();

  // Sends all highlighted threads to every tab, in turn; ends without waiting for a page that hangs.
  async::Task<void> pushMailboxMarksToAllWindows();
  // Gets how many of the threads are done; false ends the work.
  using TagProgress = std::function<bool(std::size_t done)>;
  // Puts each of these threads into the tag's mailbox or takes it out, as its highlights say.
  async::Task<void> syncAllTags(std::set<std::string> threadIds, TagProgress progress = nullptr);

  HighlightStore& store() { return store_; }

 private:
  // The work outlives no tab: it looks again after each suspension.
  using WeakTab = std::weak_ptr<web::WindowViewModel>;

  async::Task<void> handleMessageChanged(WeakTab weakTab, std::string internalId);
  async::Task<void> handleContainersChanged(WeakTab weakTab, std::int64_t count,
                                            std::optional<std::int64_t> focusedIndex);
  async::Task<void> handleHostReady(WeakTab weakTab, platform::FrameInfo frame);
  // `generation` is that of the tab when its thread was known to be the right one.
  async::Task<void> pushAnchors(WeakTab weakTab, std::int64_t generation);

  // The saved highlights of the message in that tab have changed.
  void highlightsChanged(Tab tab);
  // All highlighted threads, as pages and the log get them.
  struct Marks {
    std::size_t count = 0;
    std::string json;
    std::string joined;
  };
  const Marks& marks();
  async::Task<void> pushMailboxMarks(WeakTab weakTab);
  async::Task<void> syncTagOfTab(Tab tab);
  async::Task<void> syncTag(std::vector<jmap::ThreadEmailInfo> threadEmails);
  async::Task<std::optional<std::string>> resolveTagMailbox(std::string name);

  app::WindowManager& windowManager_;
  jmap::MailQueries& mail_;
  HighlightStore& store_;
  settings::AppSettings& settings_;
  platform::Panels& panels_;
  const base::Logger logger_{"system"};
  std::map<std::string, std::vector<jmap::ThreadEmailInfo>> threadCache_; // by thread id
  std::optional<std::pair<std::string, std::string>> cachedTagMailbox_;   // name and id
  std::optional<Marks> marks_;                                            // until the store changes
  base::Subscription storeChanged_;
  async::Scope scope_;
};

} // namespace ondrel::highlights
