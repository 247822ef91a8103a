#pragma once

#include "base/Event.h"
#include "platform/linux/glib/Connection.h"
#include "ui/page/CrashedPage.h"
#include "ui/page/DownloadProgressBar.h"
#include "ui/page/FindBar.h"
#include "ui/page/LoadBar.h"
#include "ui/page/MouseOverBar.h"
#include "ui/page/PageDialogView.h"
#include "ui/page/PageNotices.h"
#include "ui/page/ProblemBar.h"
#include "ui/page/ZoomGestures.h"
#include "ui/page/ZoomHint.h"

#include <gtk/gtk.h>

#include <memory>
#include <optional>
#include <vector>

namespace ondrel::web {
class WindowViewModel;
}

namespace ondrel::ui {

// All that a tab shows once it has been looked at, from top to bottom: the place of the announcement, what
// the user has to know, what is wrong with the page, what the user looks for in it, the page with what lies
// over it (load, zoom, the hovered link, its dialog), the downloads. Parts that are seldom needed are made
// when they are.
class PageArea {
 public:
  // The launcher, for the files that have been downloaded, outlives it.
  PageArea(std::shared_ptr<web::WindowViewModel> viewModel, platform::UriLauncher& launcher);
  ~PageArea();
  PageArea(const PageArea&) = delete;
  PageArea& operator=(const PageArea&) = delete;

  GtkWidget* widget() const { return box_.get(); }
  GtkRevealer* announcementPlace() const { return GTK_REVEALER(announcement_); }

  // The view of the web engine. Lets go of the one before; null for none.
  void setPage(GtkWidget* page);
  // Gives the keyboard to the page, or to what stands in its place.
  void focus();

 private:
  void announcementChanged();
  void updateNotice();
  void updateProblem();
  void updateBar(std::optional<ProblemBar>& bar, bool shown, ProblemBar::Content (PageArea::*content)() const,
                 const std::string& title, const std::string& description);
  ProblemBar::Content loadProblem() const;
  ProblemBar::Content navigationProblem() const;
  ProblemBar::Content noApplication() const;
  ProblemBar::Content notice() const;
  ProblemBar::Content hang() const;
  void updateDialog();
  void updateDownloads();
  void updateLoad();
  void updateFind();
  void follow();
  std::function<void()> reload() const;
  std::function<void()> tryAgain() const;
  std::function<void()> dismissProblem() const;

  const std::shared_ptr<web::WindowViewModel> viewModel_;
  platform::UriLauncher& launcher_;
  glib::Ref<GtkWidget> box_;
  GtkWidget* announcement_;
  GtkWidget* stack_;
  GtkWidget* overlay_;
  PageNotices notices_;
  MouseOverBar mouseOver_;
  LoadBar load_;
  ZoomHint zoom_;
  ZoomGestures zoomGestures_;
  std::optional<FindBar> find_;
  std::optional<ProblemBar> notice_;
  std::optional<ProblemBar> loadProblem_;
  std::optional<ProblemBar> navigationProblem_;
  std::optional<ProblemBar> noApplication_;
  std::optional<ProblemBar> hang_;
  std::optional<PageDialogView> dialog_;
  std::optional<CrashedPage> stopped_;
  std::optional<DownloadProgressBar> downloads_;
  glib::Connection revealed_;
  std::vector<base::Subscription> subscriptions_;
};

} // namespace ondrel::ui
