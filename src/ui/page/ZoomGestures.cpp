#include "ui/page/ZoomGestures.h"

#include <cmath>
#include <utility>

namespace ondrel::ui {

namespace {

constexpr double pixelsOfStep = 40; // of a touchpad, which tells no clicks
constexpr double spreadOfStep = 1.1;

bool hasControlAlone(GtkEventController* controller) {
  const auto state = gtk_event_controller_get_current_event_state(controller);
  constexpr auto relevant = GDK_CONTROL_MASK | GDK_SHIFT_MASK | GDK_ALT_MASK | GDK_SUPER_MASK;
  return (state & relevant) == GDK_CONTROL_MASK;
}

GtkEventController* addedTo(GtkWidget* widget, GtkEventController* controller) {
  gtk_event_controller_set_propagation_phase(controller, GTK_PHASE_CAPTURE);
  gtk_widget_add_controller(widget, controller);
  return controller;
}

} // namespace

ZoomGestures::ZoomGestures(GtkWidget* widget, std::function<void(int steps)> zoom) : zoom_(std::move(zoom)) {
  auto* wheel = addedTo(widget, gtk_event_controller_scroll_new(GTK_EVENT_CONTROLLER_SCROLL_VERTICAL));
  connections_.push_back(glib::connect<gboolean(GtkEventControllerScroll*, double, double)>(
      wheel, "scroll", [this](GtkEventControllerScroll* controller, double, double distance) -> gboolean {
        return scrolled(controller, distance);
      }));
  auto* pinch = addedTo(widget, GTK_EVENT_CONTROLLER(gtk_gesture_zoom_new()));
  connections_.push_back(glib::connect<void(GtkGesture*, GdkEventSequence*)>(
      pinch, "begin", [this](GtkGesture*, GdkEventSequence*) { lastScale_ = 1; }));
  connections_.push_back(glib::connect<void(GtkGesture*, double)>(
      pinch, "scale-changed", [this](GtkGesture*, double scale) { spread(scale); }));
}

bool ZoomGestures::scrolled(GtkEventControllerScroll* controller, double distance) {
  if (!hasControlAlone(GTK_EVENT_CONTROLLER(controller))) {
    scrolled_ = 0;
    return false;
  }
  const bool isInPixels = gtk_event_controller_scroll_get_unit(controller) == GDK_SCROLL_UNIT_SURFACE;
  scrolled_ += isInPixels ? distance / pixelsOfStep : distance;
  const auto steps = std::trunc(scrolled_);
  scrolled_ -= steps;
  if (steps != 0)
    zoom_(-static_cast<int>(steps)); // away from the user for larger
  return true;
}

// Not claimed: the page, which saw the fingers come, would not see them leave.
void ZoomGestures::spread(double scale) {
  if (!(scale > 0))
    return;
  const auto steps = std::trunc(std::log(scale / lastScale_) / std::log(spreadOfStep));
  lastScale_ *= std::pow(spreadOfStep, steps);
  if (steps != 0)
    zoom_(static_cast<int>(steps));
}

} // namespace ondrel::ui
