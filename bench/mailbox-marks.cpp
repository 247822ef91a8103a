// How long it takes until all tabs have got the highlighted threads, by the number of those. Prints one line
// of JSON with medians in milliseconds, for bench/run.
#include "Bench.h"
#include "EngineWindow.h"
#include "app/BrowserContent.h"
#include "app/ClosedTabs.h"
#include "app/SessionStore.h"
#include "app/WindowManager.h"
#include "async/sleep.h"
#include "highlights/HighlightService.h"
#include "highlights/file/HighlightStore.h"
#include "jmap/mail/MailQueries.h"
#include "jmap/newmail/NotificationManager.h"
#include "platform/linux/text/ResourceText.h"
#include "scripts/PageScriptSource.h"
#include "settings/AppSettings.h"
#include "support/FakeApplication.h"
#include "support/FakeDesktop.h"
#include "support/FakeHttpClient.h"
#include "support/FakeJMAPClient.h"
#include "support/FakeNewFiles.h"
#include "support/FakeNotificationCenter.h"
#include "support/PageServer.h"
#include "web/DownloadNotices.h"
#include "web/MessageFiles.h"
#include "web/RunningDownloads.h"
#include "web/WebServices.h"
#include "web/WebView.h"
#include "web/WebViewConfiguration.h"
#include "web/WindowViewModel.h"

#include <boost/json/value.hpp>

#include <array>

namespace {

using namespace ondrel;
using namespace ondrel::bench;
using namespace std::chrono_literals;

constexpr int tabCount = 20;
constexpr std::array threadCounts{200, 2000};
constexpr int rowCount = 50; // that a page shows, each tenth of a highlighted thread
constexpr int rounds = 31;
constexpr int warmUpRounds = 5;

std::string mailbox() {
  std::string rows;
  for (int i = 0; i < rowCount; ++i)
    rows += fmt::format(R"(<li><a href="/mail/Inbox/T{}.M{}">Subject {}</a></li>)",
                        i % 10 == 0 ? i : threadCounts.back() + i, i, i);
  return R"(<!doctype html><title>Inbox</title><ul class="v-MailboxSource">)" + rows + "</ul>";
}

settings::Site siteAt(const std::string& address) {
  settings::Site site;
  site.webAppBaseURL = {address, address};
  return site;
}

// The program's tabs with real pages; of their windows there is only one that shows the last of them.
class Tabs {
 public:
  Tabs(EngineWindow& window, const std::string& address)
      : settings_(defaults_, siteAt(address)), services_{.settings = settings_,
                                                         .scripts = scripts_,
                                                         .application = application_,
                                                         .webViews = window.factory(),
                                                         .panels = panels_,
                                                         .uriLauncher = uriLauncher_,
                                                         .notifications = notifications_,
                                                         .messageFiles = messageFiles_,
                                                         .downloadNotices = downloadNotices_,
                                                         .runningDownloads = runningDownloads_},
        stack_(GTK_STACK(gtk_stack_new())),
        manager_(application_, settings_, sessionStore_, closedTabs_, clipboard_, services_,
                 [this](std::shared_ptr<web::WindowViewModel> model, std::shared_ptr<platform::Window>) {
                   return std::make_unique<Content>(std::move(model), services_, stack_);
                 }) {
    highlightThreads(threadCounts.front());
    window.show(GTK_WIDGET(stack_));
  }

  async::Task<void> open() {
    co_await async::sleep(100ms); // the session has been restored
    while (manager_.windows().viewModels().size() < tabCount) {
      manager_.newTab();
      co_await async::sleep(10ms);
    }
    for (const auto& tab : manager_.windows().viewModels())
      for (int attempt = 0; co_await marks(tab) != rowCount / 10; ++attempt) {
        if (attempt == 300)
          fail("a page never got its marks");
        co_await async::sleep(100ms);
      }
  }
  async::Task<double> push() {
    const auto begin = Clock::now();
    co_await service_.pushMailboxMarksToAllWindows();
    co_return Milliseconds(Clock::now() - begin).count();
  }
  // Until there are so many.
  void highlightThreads(int count) {
    for (; threads_ < count; ++threads_)
      store_.add(
          {fmt::format("id-{}", threads_), fmt::format("T{}", threads_), "text", "", "", 0, 780'000'000.0},
          fmt::format("{}@mail.example.org", threads_));
  }

 private:
  struct Content final : app::BrowserContent {
    Content(std::shared_ptr<web::WindowViewModel> model, const web::WebServices& services, GtkStack* stack)
        : view(std::move(model), services) {
      view.onWebViewMade = [stack](platform::WebView& made) {
        auto* widget = static_cast<GtkWidget*>(made.nativeView().handle);
        gtk_stack_add_child(stack, widget);
        gtk_stack_set_visible_child(stack, widget);
      };
      view.viewDidLoad();
      view.viewDidAppear();
    }
    web::WebView view;
  };

  static async::Task<int> marks(std::shared_ptr<web::WindowViewModel> tab) {
    const auto count = co_await tab->evaluate("document.querySelectorAll('li > [data-ondrel-mark]').length");
    co_return count ? count->to_number<int>() : 0;
  }

  int threads_ = 0;
  support::FakeDefaults defaults_;
  support::FakeFiles files_;
  support::FakeApplication application_;
  support::FakePanels panels_;
  support::FakeUriLauncher uriLauncher_;
  support::FakeClipboard clipboard_;
  support::FakeNotificationCenter center_;
  jmap::NotificationManager notifications_{center_};
  settings::AppSettings settings_;
  const web::PageScripts scripts_{
      scripts::pageScriptSource(platform::text::resourceText, scripts::ConsoleRelay::unwanted)};
  app::SessionStore sessionStore_{files_, files_};
  app::ClosedTabs closedTabs_{files_, files_};
  support::FakeHttpClient http_;
  support::FakeNewFiles newFiles_{files_};
  web::MessageFiles messageFiles_{http_, newFiles_, files_, notifications_};
  web::RunningDownloads runningDownloads_;
  web::DownloadNotices downloadNotices_{notifications_, application_, uriLauncher_};
  web::WebServices services_;
  GtkStack* stack_;
  app::WindowManager manager_;
  support::FakeJMAPClient client_;
  jmap::MailQueries mail_{client_, settings_, [] {}};
  highlights::HighlightStore store_{files_, files_};
  highlights::HighlightService service_{manager_, services_.messages, mail_, store_, settings_, panels_};
};

async::Task<void> measure(Tabs& tabs) {
  co_await tabs.open();
  std::string results;
  for (const int count : threadCounts) {
    std::vector<double> times;
    for (int round = -warmUpRounds; round < rounds; ++round) {
      tabs.highlightThreads(count + warmUpRounds + round); // each time one more
      const double time = co_await tabs.push();
      if (round >= 0)
        times.push_back(time);
      co_await async::sleep(50ms);
    }
    results += fmt::format("{}\"{}\": {:.2f}", results.empty() ? "" : ", ", count, median(std::move(times)));
  }
  fmt::print("{{{}}}\n", results);
}

} // namespace

int main() {
  EngineWindow window;
  support::PageServer server;
  server.serve("/", mailbox());
  server.serve("/mail/", mailbox());
  Tabs tabs(window, server.url("/", "localhost"));
  runToEnd(measure(tabs));
  return 0;
}
