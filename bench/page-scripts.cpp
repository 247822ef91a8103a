// What the page scripts of ordinary tabs cost the web process: on a conversation that nobody touches, and
// while the message list scrolls. Shows two pages of the demonstration service, one with the scripts and one
// without, and prints the processor times of both in seconds, as one line of JSON for bench/run.
//
//   page-scripts ADDRESS [second] [without]
//
// The page with the scripts is the first that is made, or the second. "without": it has none either, which
// tells the noise.
#include "EngineWindow.h"
#include "PageDelegate.h"
#include "async/sleep.h"
#include "platform/linux/text/ResourceText.h"
#include "scripts/PageScriptSource.h"
#include "web/WebViewConfiguration.h"

#include <boost/json.hpp>
#include <fmt/core.h>
#include <unistd.h>

#include <chrono>
#include <cstdlib>
#include <ctime>
#include <filesystem>
#include <fstream>
#include <map>
#include <set>
#include <string>
#include <string_view>

namespace {

using namespace ondrel;
using namespace ondrel::bench;
using namespace std::chrono_literals;
using Seconds = std::chrono::duration<double>;

constexpr int scrolls = 8; // of each page that count
constexpr async::Duration idleWindow = 20s;
constexpr async::Duration settling =
    6s; // the scripts have found the application, the loading has calmed down
constexpr async::Duration deadline = 20s;

// Its messages stand in frames of their own, in which scripts run too.
constexpr std::string_view conversation = "mail/Inbox/T3?u=demo";
constexpr std::string_view list = "mail/Inbox/?u=demo";

// Down the list and up again, a step a frame. With `hover` the page also hears of each element that comes
// under a pointer resting in the middle.
constexpr std::string_view scrollSource = R"js(((hover) => {
  const steps = 180, pixels = 40;
  const scroller = document.querySelector('.v-Mailbox-scroller');
  const {left, top, width, height} = scroller.getBoundingClientRect();
  let under = null;
  let step = 0;
  const next = () => {
    scroller.scrollTop += step < steps / 2 ? pixels : -pixels;
    const element = hover ? document.elementFromPoint(left + width / 2, top + height / 2) : null;
    if (element && element !== under) {
      under = element;
      element.dispatchEvent(new MouseEvent('mouseover', {bubbles: true, composed: true}));
    }
    if (++step < steps) {
      requestAnimationFrame(next);
    } else {
      window.webkit.messageHandlers.ondrel.postMessage({type: 'scrolled'});
    }
  };
  scroller.scrollTop = 0;
  requestAnimationFrame(next);
}))js";

// The engine's processes for pages, below this one.
std::set<pid_t> webProcesses() {
  std::map<pid_t, pid_t> parents;
  std::set<pid_t> web;
  std::error_code gone;
  for (const auto& entry : std::filesystem::directory_iterator("/proc", gone)) {
    std::string line;
    if (!std::getline(std::ifstream(entry.path() / "stat"), line))
      continue;
    // "pid (name) state parent ...", where the name may hold anything.
    const auto nameEnd = line.rfind(')');
    const auto pid = static_cast<pid_t>(std::atoi(line.c_str()));
    parents[pid] = static_cast<pid_t>(std::atoi(line.c_str() + nameEnd + 4));
    if (line.find("(WebKitWebProces)") != std::string::npos)
      web.insert(pid);
  }
  std::erase_if(web, [&](pid_t pid) {
    while (pid > 1 && pid != getpid())
      pid = parents[pid];
    return pid != getpid();
  });
  return web;
}

Seconds processorTime(pid_t process) {
  clockid_t clock{};
  timespec time{};
  if (clock_getcpuclockid(process, &clock) != 0 || clock_gettime(clock, &time) != 0)
    fail("a web process is gone");
  return std::chrono::seconds(time.tv_sec) + std::chrono::nanoseconds(time.tv_nsec);
}

// One page with the process that shows it. Notes what the page says.
class Page final : public PageDelegate {
 public:
  Page(platform::WebViewFactory& factory, const web::UserScripts& scripts, GtkWidget* box)
      : before_(webProcesses()), view_(factory.make(scripts)), box_(box),
        widget_(static_cast<GtkWidget*>(view_->nativeView().handle)) {
    view_->setDelegate(this);
    view_->addScriptMessageHandler("ondrel");
    // Neither pointer nor focus may tell the two pages apart.
    gtk_widget_set_can_target(widget_, FALSE);
    gtk_widget_set_can_focus(widget_, FALSE);
    gtk_widget_set_vexpand(widget_, TRUE);
    gtk_box_append(GTK_BOX(box_), widget_);
  }
  ~Page() override {
    view_->setDelegate(nullptr);
    gtk_box_remove(GTK_BOX(box_), widget_);
  }
  Page(const Page&) = delete;
  Page& operator=(const Page&) = delete;

  // Loads the address, and signs in if the service asks for it. The first load tells the process: no other
  // page may be made meanwhile.
  async::Task<void> open(std::string address) {
    view_->load(address);
    co_await loaded.wait();
    const auto asked = co_await view_->evaluate("document.querySelector('#sign-in') !== null", {}, deadline);
    if (!asked)
      fail("a page could not be asked: " + asked.error().message);
    if (asked->as_bool()) {
      const auto pressed =
          co_await view_->evaluate("document.querySelector('#sign-in').click(), null", {}, deadline);
      if (!pressed)
        fail("the sign-in button could not be pressed: " + pressed.error().message);
      co_await loaded.wait();
    }
    if (!processes_.empty())
      co_return;
    for (const pid_t process : webProcesses())
      if (!before_.contains(process))
        processes_.insert(process);
    if (processes_.size() != 1)
      fail(fmt::format("{} web processes show one page", processes_.size()));
  }

  async::Task<void> scrollOnce(bool hover) {
    const auto ordered =
        co_await view_->evaluate(fmt::format("{}({}), null", scrollSource, hover), {}, deadline);
    if (!ordered)
      fail("a page could not be scrolled: " + ordered.error().message);
    co_await scrolled_.wait();
  }

  Seconds processorTime() const { return ::processorTime(*processes_.begin()); }

  // Whether scripts that only the program brings have spoken since the last load.
  bool hasWorkingScripts() const { return heard_.contains("composeReady") && heard_.contains("titleChange"); }
  bool hasScripts() const { return heard_.size() > heard_.count("scrolled"); }

  void didCommit() override { heard_.clear(); }
  void didReceiveScriptMessage(const platform::ScriptMessage& message) override {
    const std::string type(message.body.at("type").as_string());
    heard_.insert(type);
    if (type == "scrolled")
      scrolled_.send();
  }

 private:
  const std::set<pid_t> before_; // the processes of other pages
  std::shared_ptr<platform::WebView> view_;
  GtkWidget* box_;
  GtkWidget* widget_;
  std::set<pid_t> processes_;
  std::set<std::string> heard_;
  async::Signal scrolled_;
};

// Processor times for the same thing.
struct Pair {
  Seconds with;
  Seconds without;
};

async::Task<Seconds> scrollCost(Page& page, bool hover) {
  const Seconds begin = page.processorTime();
  co_await page.scrollOnce(hover);
  co_await async::sleep(100ms); // the last frame is painted after the page has told of it
  co_return page.processorTime() - begin;
}

struct Bench {
  platform::WebViewFactory& factory;
  web::UserScripts scripts;
  bool scriptsSecond;
  GtkWidget* box;
  std::string address;

  async::Task<void> measure() {
    const web::UserScripts none;
    Page first(factory, scriptsSecond ? none : scripts, box);
    co_await first.open(address + std::string(conversation));
    Page second(factory, scriptsSecond ? scripts : none, box);
    co_await second.open(address + std::string(conversation));
    Page& with = scriptsSecond ? second : first;
    Page& without = scriptsSecond ? first : second;
    co_await settle(with, without);
    const Pair idle = co_await measureIdle(with, without);

    co_await with.open(address + std::string(list));
    co_await without.open(address + std::string(list));
    co_await settle(with, without);
    auto scroll = co_await measureScrolls(with, without, false);
    auto hover = co_await measureScrolls(with, without, true);
    fmt::print("{}\n", boost::json::serialize(
                           boost::json::object{{"idleSeconds", Seconds(idleWindow).count()},
                                               {"idle", {{idle.with.count(), idle.without.count()}}},
                                               {"scroll", std::move(scroll)},
                                               {"hover", std::move(hover)}}));
  }

  async::Task<void> settle(const Page& with, const Page& without) const {
    co_await async::sleep(settling);
    if (with.hasWorkingScripts() == scripts.empty() || without.hasScripts())
      fail("the pages don't have the scripts that they should");
  }

  // Both at the same time, so that whatever else the machine does meets both.
  async::Task<Pair> measureIdle(const Page& with, const Page& without) const {
    const Pair begin{with.processorTime(), without.processorTime()};
    co_await async::sleep(idleWindow);
    co_return Pair{with.processorTime() - begin.with, without.processorTime() - begin.without};
  }

  // In turn. The first scroll of each may fetch rows and doesn't count.
  async::Task<boost::json::array> measureScrolls(Page& with, Page& without, bool hover) const {
    boost::json::array pairs;
    for (int i = -1; i < scrolls; ++i) {
      const bool withFirst = i % 2 == 0;
      const Seconds first = co_await scrollCost(withFirst ? with : without, hover);
      const Seconds second = co_await scrollCost(withFirst ? without : with, hover);
      if (i >= 0)
        pairs.push_back({(withFirst ? first : second).count(), (withFirst ? second : first).count()});
    }
    co_return pairs;
  }
};

} // namespace

int main(int count, char** values) {
  if (count < 2)
    fail("usage: page-scripts ADDRESS [second] [without]");
  const std::set<std::string_view> words(values + 2, values + count);

  EngineWindow window;
  auto* box = gtk_box_new(GTK_ORIENTATION_VERTICAL, 0);
  gtk_box_set_homogeneous(GTK_BOX(box), TRUE);
  gtk_window_set_decorated(window.window(), FALSE);
  gtk_window_set_default_size(window.window(), 1200, 1000);
  window.show(box);

  const web::PageScripts scripts(
      scripts::pageScriptSource(platform::text::resourceText, scripts::ConsoleRelay::unwanted));
  Bench bench{window.factory(),
              words.contains("without") ? web::UserScripts{} : scripts.mainConfiguration()->userScripts,
              words.contains("second"), box, values[1]};
  runToEnd(bench.measure());
  return 0;
}
