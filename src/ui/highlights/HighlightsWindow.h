#pragma once

#include "base/Event.h"
#include "highlights/HighlightList.h"
#include "platform/linux/glib/Connection.h"
#include "ui/highlights/HighlightsPage.h"
#include "ui/page/CrashedPage.h"
#include "ui/page/ProblemBar.h"

#include <gtk/gtk.h>

#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace ondrel::platform {
class Application;
class UserDefaults;
class WebViewFactory;
class Window;
} // namespace ondrel::platform

namespace ondrel::ui {

// The one window that lists all highlights and searches them, made anew each time it is opened.
class HighlightsWindow final {
 public:
  // All outlive it.
  struct Services {
    platform::Application& application;
    platform::WebViewFactory& webViews;
    platform::UserDefaults& defaults;
    highlights::HighlightStore& store;
    highlights::HighlightExport& highlightExport;
    std::function<void()> exportHighlights;
    // Shows a message of the service, by its address and the id of the email.
    std::function<void(const std::string& url, const std::optional<std::string>& emailId)> navigate;
  };

  explicit HighlightsWindow(Services services);
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
  GtkWidget* makeSearchBar();
  void addKeys(GtkWidget* box);
  void openPage();
  void update(bool isSearch);
  void showPart(const char* name);

  const Services services_;
  // Of the open window; empty while there is none.
  std::shared_ptr<platform::Window> window_;
  glib::Ref<GtkWidget> content_;
  GtkWidget* stack_ = nullptr;
  GtkWidget* spinner_ = nullptr; // in the header bar
  GtkWidget* searchButton_ = nullptr;
  GtkWidget* searchBar_ = nullptr;
  GtkWidget* exportButton_ = nullptr;
  std::optional<ProblemBar> problem_;
  std::optional<CrashedPage> stopped_;
  std::optional<highlights::HighlightList> list_;
  std::optional<HighlightsPage> page_;
  std::vector<glib::Connection> connections_;
  base::Subscription listChanged_;
  std::vector<base::Subscription> subscriptions_;
};

} // namespace ondrel::ui
