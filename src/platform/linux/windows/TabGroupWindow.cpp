#include "platform/linux/windows/TabGroupWindow.h"

#include "platform/linux/windows/FrameLimits.h"
#include "platform/linux/windows/KeyMapping.h"
#include "platform/linux/windows/TabNames.h"
#include "platform/linux/windows/TabWindow.h"
#include "platform/linux/windows/WindowSystem.h"
#include "platform/linux/windows/X11Windows.h"

#include <chrono>
#include <utility>

namespace ondrel::platform::windows {

namespace {

constexpr std::chrono::milliseconds tabOpeningTime{300}; // and a little more

// Without chrome (nothing set one) the top-level still needs its buttons.
GtkWidget* topBarOf(GroupChrome* chrome) {
  return chrome ? static_cast<GtkWidget*>(chrome->topBar().handle) : adw_header_bar_new();
}

GtkWidget* verticalBox(GtkWidget* topBar, AdwTabBar* tabBar, AdwTabView* view) {
  auto* box = gtk_box_new(GTK_ORIENTATION_VERTICAL, 0);
  gtk_box_append(GTK_BOX(box), topBar);
  gtk_box_append(GTK_BOX(box), GTK_WIDGET(tabBar));
  gtk_box_append(GTK_BOX(box), GTK_WIDGET(view));
  gtk_widget_set_vexpand(GTK_WIDGET(view), TRUE);
  return box;
}

} // namespace

TabGroupWindow::TabGroupWindow(WindowSystem& system, GtkApplication* application, const Rect& size, Bars bars,
                               std::unique_ptr<GroupChrome> chrome)
    : system_(system), window_(glib::share(GTK_WINDOW(adw_application_window_new(application)))),
      view_(glib::share(adw_tab_view_new())), chrome_(std::move(chrome)), placement_(window_.get(), size),
      menu_(view_.get(), GTK_WIDGET(window_.get()), [this](AdwTabPage* page) { closeOthers(page); }) {
  // Keys come through the application's monitors and commands.
  adw_tab_view_set_shortcuts(view_.get(), ADW_TAB_VIEW_SHORTCUT_NONE);
  gtk_widget_set_size_request(GTK_WIDGET(window_.get()), static_cast<int>(smallestWidth),
                              static_cast<int>(smallestHeight));
  fill(bars);
  updateTitle();
  connectTabs();
  connectKeys();
  connections_.push_back(
      glib::connect<gboolean(GtkWindow*)>(window_.get(), "close-request", [this](GtkWindow*) {
        closeOthers(nullptr);
        return TRUE;
      }));
  if (chrome_)
    chrome_->selectedWindowDidChange(nullptr);
}

TabGroupWindow::~TabGroupWindow() {
  destroy();
}

void TabGroupWindow::fill(Bars bars) {
  auto* content = GTK_WIDGET(view_.get());
  if (bars == Bars::shown) {
    auto* tabBar = adw_tab_bar_new();
    adw_tab_bar_set_autohide(tabBar, TRUE);
    fillTabBar_ = async::Timer({}, [this, tabBar] { fillTabBar(tabBar); });
    content = verticalBox(topBarOf(chrome_.get()), tabBar, view_.get());
  }
  adw_application_window_set_content(ADW_APPLICATION_WINDOW(window_.get()), content);
}

// The bar scrolls to each tab that comes. Those of a restored window are all there a turn after it was made;
// once they have their sizes, the one in front is brought back into view.
void TabGroupWindow::fillTabBar(AdwTabBar* tabBar) {
  giveTabsTheirRoles();
  adw_tab_bar_set_view(tabBar, view_.get());
  nameTabs(tabBar);
  connections_.push_back(glib::connect<void(AdwTabView*, AdwTabPage*, int)>(
      view_.get(), "page-attached", [tabBar](AdwTabView*, AdwTabPage*, int) { nameTabs(tabBar); }));
  connections_.push_back(glib::onNotify(view_.get(), "selected-page", [tabBar] { nameTabs(tabBar); }));
  fillTabBar_ =
      async::Timer(tabOpeningTime, [this] { g_object_notify(G_OBJECT(view_.get()), "selected-page"); });
}

void TabGroupWindow::destroy() {
  fillTabBar_ = {};
  connections_.clear();
  titleConnection_ = {};
  chrome_.reset();
  gtk_window_destroy(window_.get());
}

void TabGroupWindow::connectTabs() {
  using PageHandler = void(AdwTabView*, AdwTabPage*, int);
  connections_.push_back(
      glib::connect<PageHandler>(view_.get(), "page-attached", [this](AdwTabView*, AdwTabPage* page, int) {
        if (auto* window = TabWindow::of(page))
          window->didAttach(shared_from_this(), page);
      }));
  connections_.push_back(
      glib::connect<PageHandler>(view_.get(), "page-detached", [this](AdwTabView*, AdwTabPage* page, int) {
        const auto self = shared_from_this();
        if (const auto window = windowOf(page))
          window->didDetach();
        if (size() == 0)
          system_.retire(*this);
      }));
  connections_.push_back(glib::connect<gboolean(AdwTabView*, AdwTabPage*)>(
      view_.get(), "close-page", [this](AdwTabView* view, AdwTabPage* page) {
        const auto self = shared_from_this();
        const auto window = windowOf(page);
        const bool asks = window && !window->closesUnasked() && system_.asksBeforeClosing();
        if (window && !asks)
          window->beginClose();
        adw_tab_view_close_page_finish(view, page, !asks);
        if (asks)
          system_.closeAsking({window});
        return TRUE;
      }));
  connections_.push_back(
      glib::connect<AdwTabView*(AdwTabView*)>(view_.get(), "create-window", [this](AdwTabView*) {
        const auto group = system_.makeGroup(frame());
        group->present();
        return group->view_.get();
      }));
  connections_.push_back(glib::onNotify(view_.get(), "selected-page", [this] { selectionDidChange(); }));
}

void TabGroupWindow::connectKeys() {
  auto* keys = gtk_event_controller_key_new();
  gtk_event_controller_set_propagation_phase(keys, GTK_PHASE_CAPTURE);
  using Pressed = gboolean(GtkEventControllerKey*, guint, guint, GdkModifierType);
  connections_.push_back(glib::connect<Pressed>(
      keys, "key-pressed",
      [this](GtkEventControllerKey*, guint keyval, guint keycode, GdkModifierType state) -> gboolean {
        return system_.keyPressed(keyEventFrom(keyval, state, symbolsOf(keycode)));
      }));
  gtk_widget_add_controller(GTK_WIDGET(window_.get()), keys);
}

std::shared_ptr<TabWindow> TabGroupWindow::windowOf(AdwTabPage* page) const {
  auto* window = TabWindow::of(page);
  return window ? window->shared_from_this() : nullptr;
}

std::vector<std::shared_ptr<Window>> TabGroupWindow::windows() const {
  std::vector<std::shared_ptr<Window>> result;
  for (int i = 0; i < size(); ++i)
    if (auto window = windowOf(adw_tab_view_get_nth_page(view_.get(), i)))
      result.push_back(std::move(window));
  return result;
}

std::shared_ptr<Window> TabGroupWindow::selectedWindow() const {
  return windowOf(adw_tab_view_get_selected_page(view_.get()));
}

void TabGroupWindow::append(TabWindow& window) {
  auto* page = adw_tab_view_append(view_.get(), window.container());
  window.didAttach(shared_from_this(), page);
  selectionDidChange();
}

void TabGroupWindow::insertBehind(TabWindow& neighbour, TabWindow& window) {
  auto* selected = adw_tab_view_get_selected_page(view_.get());
  const auto source = window.group();
  const auto position = [&] { return adw_tab_view_get_page_position(view_.get(), neighbour.page()) + 1; };
  if (!source) {
    auto* page = adw_tab_view_insert(view_.get(), window.container(), position());
    window.didAttach(shared_from_this(), page);
  } else if (source.get() == this) {
    const int from = adw_tab_view_get_page_position(view_.get(), window.page());
    adw_tab_view_reorder_page(view_.get(), window.page(), from < position() ? position() - 1 : position());
  } else {
    adw_tab_view_transfer_page(source->view_.get(), window.page(), view_.get(), position());
  }
  if (selected)
    adw_tab_view_set_selected_page(view_.get(), selected);
}

void TabGroupWindow::insert(TabWindow& window, int position) {
  auto* selected = adw_tab_view_get_selected_page(view_.get());
  adw_tab_view_transfer_page(window.group()->view_.get(), window.page(), view_.get(), position);
  if (selected)
    adw_tab_view_set_selected_page(view_.get(), selected);
}

void TabGroupWindow::select(TabWindow& window) {
  adw_tab_view_set_selected_page(view_.get(), window.page());
}

void TabGroupWindow::selectNeighbour(int step) {
  auto* selected = adw_tab_view_get_selected_page(view_.get());
  const int count = size();
  if (!selected || count == 0)
    return;
  const int next = (adw_tab_view_get_page_position(view_.get(), selected) + step + count) % count;
  adw_tab_view_set_selected_page(view_.get(), adw_tab_view_get_nth_page(view_.get(), next));
}

void TabGroupWindow::closePage(TabWindow& window) {
  adw_tab_view_close_page(view_.get(), window.page());
}

void TabGroupWindow::closeOthers(AdwTabPage* kept) {
  const auto self = shared_from_this();
  std::vector<std::shared_ptr<TabWindow>> others;
  for (int i = 0; i < size(); ++i) {
    auto* page = adw_tab_view_get_nth_page(view_.get(), i);
    if (auto window = page == kept ? nullptr : windowOf(page))
      others.push_back(std::move(window));
  }
  system_.closeAsking(others);
}

void TabGroupWindow::selectionDidChange() {
  const auto window = selectedWindow();
  updateTitle();
  titleConnection_ = {};
  if (auto* page = adw_tab_view_get_selected_page(view_.get()))
    titleConnection_ = glib::onNotify(page, "title", [this] { updateTitle(); });
  if (window == lastSelected_.lock())
    return;
  lastSelected_ = window;
  if (chrome_)
    chrome_->selectedWindowDidChange(window);
  system_.keyMayHaveChanged();
}

void TabGroupWindow::updateTitle() {
  auto* page = adw_tab_view_get_selected_page(view_.get());
  const char* title = page ? adw_tab_page_get_title(page) : nullptr;
  const char* name = g_get_application_name() ? g_get_application_name() : "";
  gtk_window_set_title(window_.get(), title && *title ? title : name);
}

void TabGroupWindow::present() {
  system_.willShow(*this, true);
  gtk_window_present(window_.get());
}

void TabGroupWindow::presentInsisting() {
  system_.willShow(*this, true);
  gtk_window_present_with_time(window_.get(), x11::serverTime(window_.get()));
}

void TabGroupWindow::showWithoutFocus() {
  system_.willShow(*this, false);
  if (gtk_widget_get_visible(GTK_WIDGET(window_.get()))) {
    x11::raise(window_.get());
    return;
  }
  x11::mapWithoutFocus(window_.get());
  gtk_widget_set_visible(GTK_WIDGET(window_.get()), TRUE);
}

void TabGroupWindow::hide() {
  system_.willHide(*this);
  placement_.rememberPosition();
  gtk_widget_set_visible(GTK_WIDGET(window_.get()), FALSE);
}

bool TabGroupWindow::isOnScreen() const {
  return gtk_widget_get_visible(GTK_WIDGET(window_.get())) && !isMinimized();
}

bool TabGroupWindow::isMinimized() const {
  auto* surface = gtk_native_get_surface(GTK_NATIVE(window_.get()));
  return surface && (gdk_toplevel_get_state(GDK_TOPLEVEL(surface)) & GDK_TOPLEVEL_STATE_MINIMIZED) != 0;
}

} // namespace ondrel::platform::windows
