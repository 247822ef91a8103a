#pragma once

#include "app/BrowserContent.h"
#include "base/Event.h"
#include "platform/linux/glib/Connection.h"
#include "ui/page/PageArea.h"
#include "web/WebView.h"

#include <gtk/gtk.h>

#include <functional>
#include <memory>
#include <optional>
#include <vector>

namespace ondrel::ui {

// Fills the place of the announcement above a page; the returned subscription keeps it filled.
using AnnouncementFiller = std::function<base::Subscription(GtkRevealer* place)>;

// What one tab shows. A tab that nobody has looked at, of a restored session, is an empty box and no more.
class ContentView final : public app::BrowserContent {
 public:
  // `services` outlives the view. `announcement` may be empty.
  ContentView(std::shared_ptr<web::WindowViewModel> viewModel, std::shared_ptr<platform::Window> window,
              const web::WebServices& services, const AnnouncementFiller& announcement);
  ~ContentView() override;
  ContentView(const ContentView&) = delete;
  ContentView& operator=(const ContentView&) = delete;

 private:
  PageArea& pageArea();
  void appeared();
  void webViewMade(platform::WebView& webView);

  const std::shared_ptr<web::WindowViewModel> viewModel_;
  const std::weak_ptr<platform::Window> window_;
  const AnnouncementFiller announcement_;
  platform::UriLauncher& launcher_;
  glib::Ref<GtkWidget> root_;
  std::optional<PageArea> pageArea_;
  base::Subscription announcementSubscription_;
  web::WebView webView_;
  std::vector<base::Subscription> subscriptions_;
  glib::Connection mapped_;
};

// Makes the contents of browser windows. `services` outlives the factory and all that it makes.
app::BrowserContentFactory contentFactory(const web::WebServices& services,
                                          AnnouncementFiller announcement = {});

} // namespace ondrel::ui
