#pragma once

#include "async/Scope.h"
#include "attachments/FilesViewModel.h"
#include "platform/linux/glib/Connection.h"
#include "platform/linux/glib/Ref.h"
#include "ui/attachments/AttachmentDrag.h"
#include "ui/attachments/AttachmentList.h"
#include "ui/attachments/AttachmentMenu.h"
#include "ui/attachments/AttachmentSelection.h"
#include "ui/attachments/CategoryFilter.h"
#include "ui/attachments/FilePreview.h"
#include "ui/attachments/ListFoot.h"
#include "ui/page/DownloadProgressBar.h"

#include <adwaita.h>

#include <functional>
#include <memory>
#include <optional>
#include <vector>

namespace ondrel::platform {
class UriLauncher;
}

namespace ondrel::ui {

// What the window of all attachments shows and does.
class FilesView {
 public:
  // All that are borrowed outlive it.
  struct Services {
    const platform::TextFormatting& formatting;
    PreviewPanel& preview;
    platform::UriLauncher& launcher;
    std::function<void()> close; // the window, as the user would
    std::shared_ptr<DraggedCopies> dragged = std::make_shared<DraggedCopies>();
  };

  FilesView(std::unique_ptr<attachments::FilesViewModel> viewModel, Services services);
  ~FilesView();
  FilesView(const FilesView&) = delete;
  FilesView& operator=(const FilesView&) = delete;

  GtkWidget* widget() const { return content_.get(); }
  // To the search, from where letters and arrows do what the user expects.
  void takeKeyboard() { gtk_widget_grab_focus(search_); }

 private:
  GtkWidget* makeHeaderBar();
  GtkWidget* makeSearchBar();
  GtkWidget* makeBody();
  void addKeys();
  void addPointer();
  const jmap::AttachmentInfo* rowAt(double y) const;
  void showMenu(const jmap::AttachmentInfo& row, GtkWidget* widget, const GdkRectangle& at);
  gboolean keyInList(guint key, GdkModifierType held);
  gboolean keyInWindow(guint key, GdkModifierType held);
  gboolean keyInSearch(guint key, GdkModifierType held);

  void follow();
  void update();
  void showError();
  void loadMore();
  async::Task<void> loadPage();
  void loadAtEnd();
  void refresh();
  async::Task<void> reload(std::optional<AttachmentList::Place> place);
  async::Task<void> settle();
  void perform(void (attachments::FilesViewModel::*action)(const jmap::AttachmentInfo&));
  void preview(const jmap::AttachmentInfo& attachment);
  std::optional<std::size_t> besideSelected(int step) const;
  const jmap::AttachmentInfo* neighbour(int step);

  const std::unique_ptr<attachments::FilesViewModel> viewModel_;
  const Services services_;
  AttachmentSelection selection_;
  FilePreview preview_;
  ListFoot foot_;
  ListFoot loneFoot_;  // where no rows are
  ListFoot emptyFoot_; // and won't be
  glib::Ref<GtkWidget> content_;
  AdwWindowTitle* title_ = nullptr;
  GtkWidget* search_ = nullptr;
  GtkWidget* stack_ = nullptr;
  AdwStatusPage* empty_ = nullptr;
  AdwToastOverlay* toasts_ = nullptr;
  std::optional<CategoryFilter> filter_;
  std::optional<AttachmentList> list_;
  std::optional<AttachmentMenu> menu_;
  std::optional<AttachmentDrag> drag_;
  DownloadProgressBar downloads_;
  bool isReloading_ = false;
  bool isSettling_ = false;
  std::size_t rowsAtLoad_ = 0; // when the list's end asked for more
  int emptyPages_ = 0;         // one after the other since then
  std::vector<glib::Connection> connections_;
  std::vector<base::Subscription> subscriptions_;
  async::Scope scope_;
};

} // namespace ondrel::ui
