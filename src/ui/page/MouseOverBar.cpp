#include "ui/page/MouseOverBar.h"

#include "ui/page/LinkText.h"

#include <algorithm>
#include <utility>

namespace ondrel::ui {

namespace {

constexpr int distance = 12; // pixels between the pointer and the bar

// The two labels of an address side by side. The first one has all the width that it wants, and more lines
// when that isn't enough; the second what is left.
int naturalWidth(GtkWidget* widget) {
  int natural = 0;
  gtk_widget_measure(widget, GTK_ORIENTATION_HORIZONTAL, -1, nullptr, &natural, nullptr, nullptr);
  return natural;
}

GtkSizeRequestMode requestMode(GtkWidget*) {
  return GTK_SIZE_REQUEST_HEIGHT_FOR_WIDTH;
}

void measureSiteAndRest(GtkWidget* box, GtkOrientation orientation, int forSize, int* minimum, int* natural,
                        int* minimumBaseline, int* naturalBaseline) {
  auto* site = gtk_widget_get_first_child(box);
  auto* rest = gtk_widget_get_last_child(box);
  *minimumBaseline = *naturalBaseline = -1;
  if (orientation == GTK_ORIENTATION_HORIZONTAL) {
    gtk_widget_measure(site, orientation, -1, minimum, natural, nullptr, nullptr);
    *natural += naturalWidth(rest);
    return;
  }
  const int width = forSize < 0 ? -1 : std::min(forSize, naturalWidth(site));
  int restHeight = 0;
  gtk_widget_measure(site, orientation, width, minimum, natural, nullptr, nullptr);
  gtk_widget_measure(rest, orientation, -1, &restHeight, nullptr, nullptr, nullptr);
  *minimum = *natural = std::max(*natural, restHeight);
}

void allocateSiteAndRest(GtkWidget* box, int width, int height, int) {
  auto* site = gtk_widget_get_first_child(box);
  auto* rest = gtk_widget_get_last_child(box);
  const int siteWidth = std::min(naturalWidth(site), width);
  int least = 0;
  gtk_widget_measure(rest, GTK_ORIENTATION_HORIZONTAL, -1, &least, nullptr, nullptr, nullptr);
  const GtkAllocation sitePlace{0, 0, siteWidth, height};
  // Where there is no room, beyond the edge, where it is cut off.
  const GtkAllocation restPlace{siteWidth, 0, std::max(width - siteWidth, least), height};
  gtk_widget_size_allocate(site, &sitePlace, -1);
  gtk_widget_size_allocate(rest, &restPlace, -1);
}

GtkWidget* siteAndRest(GtkWidget* site, GtkWidget* rest) {
  auto* box = gtk_box_new(GTK_ORIENTATION_HORIZONTAL, 0);
  gtk_widget_set_layout_manager(box,
                                gtk_custom_layout_new(requestMode, measureSiteAndRest, allocateSiteAndRest));
  gtk_widget_set_overflow(box, GTK_OVERFLOW_HIDDEN);
  for (auto* label : {site, rest}) {
    gtk_widget_add_css_class(label, "dim-label");
    gtk_label_set_xalign(GTK_LABEL(label), 0);
    // An address reads from left to right in every language.
    gtk_widget_set_direction(label, GTK_TEXT_DIR_LTR);
    gtk_box_append(GTK_BOX(box), label);
  }
  gtk_label_set_wrap(GTK_LABEL(site), TRUE);
  gtk_label_set_wrap_mode(GTK_LABEL(site), PANGO_WRAP_CHAR);
  gtk_label_set_single_line_mode(GTK_LABEL(rest), TRUE);
  gtk_label_set_ellipsize(GTK_LABEL(rest), PANGO_ELLIPSIZE_MIDDLE);
  return box;
}

} // namespace

MouseOverBar::MouseOverBar(GtkOverlay* overlay, std::function<void()> left)
    : overlay_(GTK_WIDGET(overlay)), left_(std::move(left)), bar_(gtk_box_new(GTK_ORIENTATION_VERTICAL, 0)),
      divider_(gtk_separator_new(GTK_ORIENTATION_HORIZONTAL)), site_(gtk_label_new(nullptr)),
      rest_(gtk_label_new(nullptr)), row_(siteAndRest(site_, rest_)) {
  gtk_widget_set_name(bar_, "mouse-over");
  gtk_widget_add_css_class(bar_, "mouse-over");
  // The pointer belongs to the page below.
  gtk_widget_set_can_target(bar_, FALSE);
  gtk_widget_set_visible(bar_, FALSE);
  gtk_box_append(GTK_BOX(bar_), divider_);
  gtk_box_append(GTK_BOX(bar_), row_);
  gtk_overlay_add_overlay(overlay, bar_);
  followPointer();
  connections_.push_back(glib::onNotify(overlay_, "root", [this] { followActivity(); }));
  followActivity();
}

void MouseOverBar::followPointer() {
  auto* motion = gtk_event_controller_motion_new();
  gtk_event_controller_set_propagation_phase(motion, GTK_PHASE_CAPTURE);
  using Motion = void(GtkEventControllerMotion*, double, double);
  connections_.push_back(
      glib::connect<Motion>(motion, "enter", [this](GtkEventControllerMotion*, double x, double y) {
        pointerX_ = x;
        pointerY_ = y;
        pointerCameOrWent(true);
      }));
  connections_.push_back(glib::connect<Motion>(
      motion, "motion", [this](GtkEventControllerMotion*, double x, double y) { pointerMoved(x, y); }));
  connections_.push_back(glib::connect<void(GtkEventControllerMotion*)>(
      motion, "leave", [this](GtkEventControllerMotion*) { pointerCameOrWent(false); }));
  gtk_widget_add_controller(overlay_, motion);
}

// The toolkit isn't always told that the pointer has gone when another window comes up under it. The state
// flag of an inactive window depends on the window manager; this doesn't. The page has not been told either,
// and would not name the same link again: it is kept for the pointer's next motion.
void MouseOverBar::followActivity() {
  activity_ = {};
  auto* root = gtk_widget_get_root(overlay_);
  if (GTK_IS_WINDOW(root))
    activity_ = glib::onNotify(root, "is-active", [this, window = GTK_WINDOW(root)] {
      if (gtk_window_is_active(window))
        return;
      isUnattended_ = true;
      update();
    });
}

void MouseOverBar::pointerMoved(double x, double y) {
  // The toolkit may also tell of a pointer that rests, after a new layout.
  if (x != pointerX_ || y != pointerY_)
    isUnattended_ = false;
  pointerX_ = x;
  pointerY_ = y;
  if (pointerIsAway_)
    pointerCameOrWent(true);
  else if (hasAddress_)
    update();
}

void MouseOverBar::pointerCameOrWent(bool isThere) {
  pointerIsAway_ = !isThere;
  isUnattended_ = false;
  left_();
  update();
}

void MouseOverBar::setAddress(const std::string& address) {
  const auto text = linkText(address);
  gtk_label_set_text(GTK_LABEL(site_), text.site.c_str());
  gtk_label_set_text(GTK_LABEL(rest_), text.rest.c_str());
  hasAddress_ = !address.empty();
  update();
}

void MouseOverBar::update() {
  const bool isShown = hasAddress_ && !pointerIsAway_ && !isUnattended_;
  gtk_widget_set_visible(bar_, isShown);
  if (!isShown)
    return;
  int height = 0;
  gtk_widget_measure(bar_, GTK_ORIENTATION_VERTICAL, gtk_widget_get_width(overlay_), &height, nullptr,
                     nullptr, nullptr);
  const bool isAbove = pointerY_ > gtk_widget_get_height(overlay_) - height - distance;
  gtk_widget_set_valign(bar_, isAbove ? GTK_ALIGN_START : GTK_ALIGN_END);
  // The divider is on the page's side.
  gtk_box_reorder_child_after(GTK_BOX(bar_), divider_, isAbove ? row_ : nullptr);
}

} // namespace ondrel::ui
