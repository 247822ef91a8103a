#pragma once

#include "async/Timer.h"
#include "platform/GroupChrome.h"
#include "platform/linux/glib/Connection.h"
#include "platform/linux/windows/TabMenu.h"
#include "platform/linux/windows/WindowPlacement.h"

#include <adwaita.h>

#include <memory>
#include <vector>

namespace ondrel::platform::windows {

class TabWindow;
class WindowSystem;

// One top-level: the chrome's bar, the tab bar and the tabs. It goes when its last tab has gone. What the
// user does with the tabs (drags them, closes them, moves them) happens in the tab view, and the model
// follows its signals.
class TabGroupWindow final : public WindowGroup, public std::enable_shared_from_this<TabGroupWindow> {
 public:
  // Without bars no tab can come in from elsewhere or leave.
  enum class Bars { shown, none };

  // Not shown yet. `system` must outlive it.
  TabGroupWindow(WindowSystem& system, GtkApplication* application, const Rect& size, Bars bars,
                 std::unique_ptr<GroupChrome> chrome);
  ~TabGroupWindow() override;

  std::vector<std::shared_ptr<Window>> windows() const override;
  std::shared_ptr<Window> selectedWindow() const override;
  int size() const { return adw_tab_view_get_n_pages(view_.get()); }
  // The end of the top-level, whoever still holds this object; it is then an empty group. Not from its own
  // signals.
  void destroy();

  void append(TabWindow& window);
  // From wherever it is; the selected tab stays the same.
  void insertBehind(TabWindow& neighbour, TabWindow& window);
  // From another group; the selected tab stays the same if there is one.
  void insert(TabWindow& window, int position);
  void select(TabWindow& window);
  void selectNeighbour(int step); // wraps around
  void closePage(TabWindow& window);

  void present();          // in front and with the keyboard, as far as the window manager lets it
  void presentInsisting(); // also when another application has the keyboard
  void showWithoutFocus();
  void hide();
  bool isOnScreen() const;
  bool isMinimized() const;
  Rect frame() const { return placement_.frame(); }
  void setFrame(const Rect& frame) { placement_.setFrame(frame); }
  bool isMaximized() const { return placement_.isMaximized(); }
  void maximize() { placement_.maximize(); }
  void rememberPosition() { placement_.rememberPosition(); }
  GtkWindow* gtkWindow() const { return window_.get(); }
  AdwTabView* tabView() const { return view_.get(); }

 private:
  void fill(Bars bars);
  void fillTabBar(AdwTabBar* tabBar);
  void connectTabs();
  void connectKeys();
  void closeOthers(AdwTabPage* kept); // as the user wishes; null for all
  void selectionDidChange();
  void updateTitle();
  std::shared_ptr<TabWindow> windowOf(AdwTabPage* page) const;

  WindowSystem& system_;
  glib::Ref<GtkWindow> window_;
  glib::Ref<AdwTabView> view_;
  std::unique_ptr<GroupChrome> chrome_;
  WindowPlacement placement_;
  TabMenu menu_;
  async::Timer fillTabBar_;
  std::weak_ptr<Window> lastSelected_;
  std::vector<glib::Connection> connections_;
  glib::Connection titleConnection_; // of the selected page
};

} // namespace ondrel::platform::windows
