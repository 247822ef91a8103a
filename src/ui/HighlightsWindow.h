#pragma once

#include "async/Scope.h"
#include "async/Task.h"
#include "base/Event.h"
#include "platform/PassiveWebViewDelegate.h"
#include "platform/linux/glib/Connection.h"
#include "ui/StoppedPage.h"

#include <gtk/gtk.h>

#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace ondrel::highlights {
class HighlightStore;
}

namespace ondrel::platform {
class Application;
class UserDefaults;
class WebViewFactory;
class Window;
} // namespace ondrel::platform

namespace ondrel::ui {

// The one window that lists all highlights, made anew each time it is opened: its list is of that moment.
class HighlightsWindow final : private platform::PassiveWebViewDelegate {
 public:
  // All outlive it.
  struct Services {
    platform::Application& application;
    platform::WebViewFactory& webViews;
    platform::UserDefaults& defaults;
    highlights::HighlightStore& store;
    std::function<async::Task<std::string>()> generateHTML;
    std::function<void()> exportHighlights;
    // Shows a message of the service, by its address and the id of the email.
    std::function<void(const std::string& url, const std::optional<std::string>& emailId)> navigate;
  };

  explicit HighlightsWindow(Services services);
  ~HighlightsWindow() override;
  HighlightsWindow(const HighlightsWindow&) = delete;
  HighlightsWindow& operator=(const HighlightsWindow&) = delete;

  // Opens it, or brings it to the front.
  void show();

 private:
  void open();
  void forget();
  void keepFrame();
  glib::Ref<GtkWidget> makeContent();
  GtkWidget* makeHeaderBar();
  async::Task<void> fill();
  void loadPage();
  void showPart(const char* name);

  void decidePolicy(const platform::NavigationAction& action, platform::PolicyReply reply) override;
  void decidePolicy(const platform::NavigationResponse& response, platform::PolicyReply reply) override;
  void didCommit() override { showPart("page"); }
  void webProcessDidTerminate(bool) override { showPart("stopped"); }

  const Services services_;
  // Of the open window; empty while there is none.
  std::shared_ptr<platform::Window> window_;
  std::string html_;
  std::shared_ptr<platform::WebView> page_;
  glib::Ref<GtkWidget> content_;
  GtkWidget* stack_ = nullptr;
  std::optional<StoppedPage> stopped_;
  std::vector<glib::Connection> connections_;
  base::Subscription storeSubscription_;
  std::vector<base::Subscription> subscriptions_;
  std::optional<async::Scope> scope_;
};

} // namespace ondrel::ui
