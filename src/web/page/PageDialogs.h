#pragma once

#include "base/Event.h"
#include "base/Observable.h"
#include "base/Reply.h"

#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace ondrel::web {

struct PageDialogAnswer {
  std::size_t button = 0;
  std::string text;     // of the field
  bool silence = false; // the page shall not ask again
};

// A question over the page of one tab. Texts are the page's and of any kind, but bounded.
struct PageDialog {
  std::string heading;
  std::string text;
  std::vector<std::string> buttons; // the first is the default one
  std::size_t escapeButton = 0;
  std::optional<std::string> field = {}; // the text in it at first; none for no field
  bool offersSilence = false;
  std::function<void(const PageDialogAnswer&)> answer = {}; // only the first answer counts
};

// The dialogs of one tab's page. They cover this page and nothing else, one at a time, so that no page can
// lock anything but itself; from the second one on the user can end them. Main thread only.
class PageDialogs {
 public:
  // Told by a page that goes on asking after it was silenced, without end it seems.
  static constexpr int flood = 50;
  std::function<void()> onFlood;

  PageDialogs() = default;
  ~PageDialogs() { dismiss(); }
  PageDialogs(const PageDialogs&) = delete;
  PageDialogs& operator=(const PageDialogs&) = delete;

  // Null while there is none.
  base::Observable<std::shared_ptr<const PageDialog>> shown;

  // `address` is that of the page. A reply is answered safely (dropped) when the page may not ask, or when
  // its dialog goes without an answer.
  void alert(const std::string& address, std::string text, base::Reply<bool> reply);
  void confirm(const std::string& address, std::string text, base::Reply<bool> reply);
  void prompt(const std::string& address, std::string text, std::string field,
              base::Reply<std::optional<std::string>> reply);
  // Whether the page may be left; whatever the page says of it is not shown.
  void leave(base::Reply<bool> reply);

  // What is shown goes, and the page goes on.
  void dismiss();
  // The user has asked for a page: it may ask again.
  void userLoads();
  // The page of an address is shown now.
  void pageDidCommit(const std::string& address);
  // Nothing is shown while the result lives.
  base::Subscription mute();

 private:
  using Answered = std::move_only_function<void(const PageDialogAnswer&)>;

  bool maySpeak(const std::string& address);
  void show(PageDialog dialog, Answered answered);
  void finish(const PageDialogAnswer& answer);

  Answered answered_;
  std::string origin_; // of the page that asked last
  int asked_ = 0;
  int silenced_ = -1; // how often it has asked since; -1 while it may
  int mutes_ = 0;
  std::shared_ptr<PageDialogs*> self_ = std::make_shared<PageDialogs*>(this);
};

} // namespace ondrel::web
