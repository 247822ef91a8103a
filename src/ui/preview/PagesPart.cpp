#include "ui/preview/PagesPart.h"

#include "async/sleep.h"
#include "base/Translation.h"
#include "ui/preview/DrawnWidget.h"
#include "ui/widgets/Texture.h"
#include "ui/widgets/Widgets.h"

#include <fmt/format.h>

#include <algorithm>
#include <chrono>
#include <cmath>

namespace ondrel::ui {

namespace {

using namespace std::chrono_literals;

constexpr double pageGap = 12;
constexpr double pixelsPerPoint = 96.0 / 72.0;
constexpr double zoomStep = 1.25;
constexpr double wheelStep = 1.1;
constexpr double longestPull = 40; // pixels at a time
// Images larger than they are gain nothing by it, save drawings, which name a small size or none.
constexpr double longestImageSide = 2048;
// Pages out of sight that stay drawn, above and below.
constexpr std::size_t keptPages = 2;
constexpr GdkRGBA white{1, 1, 1, 1};
constexpr GdkRGBA edge{0, 0, 0, 0.2F};

std::vector<PageLayout::Size> sizes(const platform::DecodedDocument& document) {
  std::vector<PageLayout::Size> result;
  const int count = document.isAnimation() ? 1 : document.pageCount();
  for (int i = 0; i < count; ++i)
    result.push_back({document.pageWidth(i), document.pageHeight(i)});
  return result;
}

PageLayout::Options layoutOptions(platform::DocumentKind kind) {
  if (kind == platform::DocumentKind::pdf)
    return {.gap = pageGap, .perUnit = pixelsPerPoint, .fitsHeight = false};
  return {.gap = 0, .perUnit = 1, .fitsHeight = true};
}

// Where the middle of what can be seen is, as a part of everything.
double middle(GtkAdjustment* adjustment) {
  const auto upper = gtk_adjustment_get_upper(adjustment);
  return upper > 0
             ? (gtk_adjustment_get_value(adjustment) + gtk_adjustment_get_page_size(adjustment) / 2) / upper
             : 0.5;
}

// Before the toolkit has laid out the new size, which it will find to be so.
void moveTo(GtkAdjustment* adjustment, double middle, double upper) {
  const auto page = gtk_adjustment_get_page_size(adjustment);
  upper = std::max(upper, page);
  gtk_adjustment_configure(adjustment, std::clamp(middle * upper - page / 2, 0.0, upper - page), 0, upper,
                           gtk_adjustment_get_step_increment(adjustment),
                           gtk_adjustment_get_page_increment(adjustment), page);
}

bool animationsAreWanted() {
  gboolean wanted = TRUE;
  g_object_get(gtk_settings_get_default(), "gtk-enable-animations", &wanted, nullptr);
  return wanted != FALSE;
}

} // namespace

PagesPart::PagesPart(std::unique_ptr<platform::DecodedDocument> document, Options options)
    : document_(std::move(document)), options_(std::move(options)),
      layout_(sizes(*document_), layoutOptions(options_.kind)),
      canvas_(makeDrawnWidget([this](GtkSnapshot* snapshot) { draw(snapshot); })),
      scroller_(glib::share(gtk_scrolled_window_new())),
      horizontal_(gtk_scrolled_window_get_hadjustment(GTK_SCROLLED_WINDOW(scroller_.get()))),
      vertical_(gtk_scrolled_window_get_vadjustment(GTK_SCROLLED_WINDOW(scroller_.get()))) {
  gtk_widget_set_name(scroller_.get(), isPdf() ? "preview-pdf" : "preview-image");
  gtk_widget_set_name(canvas_.get(), "preview-canvas");
  setAccessibleLabel(canvas_.get(), options_.label);
  gtk_scrolled_window_set_child(GTK_SCROLLED_WINDOW(scroller_.get()), canvas_.get());
  // All of it has the keyboard, and would be scrolled to its end with a click.
  auto* viewport = gtk_scrolled_window_get_child(GTK_SCROLLED_WINDOW(scroller_.get()));
  gtk_viewport_set_scroll_to_focus(GTK_VIEWPORT(viewport), FALSE);
  gtk_widget_set_vexpand(scroller_.get(), TRUE);
  for (auto* adjustment : {horizontal_, vertical_}) {
    connections_.push_back(glib::onNotify(adjustment, "page-size", [this] { resized_.send(); }));
    connections_.push_back(glib::connect<void(GtkAdjustment*)>(adjustment, "value-changed",
                                                               [this](GtkAdjustment*) { moved_.send(); }));
  }
  connections_.push_back(glib::onNotify(canvas_.get(), "scale-factor", [this] { moved_.send(); }));
  addGestures();
  if (isPdf())
    selection_.emplace(*document_, layout_, canvas_.get(), [this](double y) { return pull(y); });
  scope_.spawn(follow());
  scope_.spawn(document_->isAnimation() && animationsAreWanted() ? animate() : fetch());
}

PagesPart::~PagesPart() {
  stopDrawing(canvas_.get());
}

void PagesPart::addGestures() {
  auto* wheel = gtk_event_controller_scroll_new(GTK_EVENT_CONTROLLER_SCROLL_VERTICAL);
  gtk_event_controller_set_propagation_phase(wheel, GTK_PHASE_CAPTURE);
  connections_.push_back(glib::connect<gboolean(GtkEventControllerScroll*, double, double)>(
      wheel, "scroll", [this](GtkEventControllerScroll* controller, double, double dy) -> gboolean {
        const auto held = gtk_event_controller_get_current_event_state(GTK_EVENT_CONTROLLER(controller));
        if (!(held & GDK_CONTROL_MASK))
          return FALSE;
        setScale(layout_.scale() * std::pow(wheelStep, -dy));
        return TRUE;
      }));
  gtk_widget_add_controller(scroller_.get(), wheel);
  auto* pinch = gtk_gesture_zoom_new();
  connections_.push_back(glib::connect<void(GtkGesture*, GdkEventSequence*)>(
      pinch, "begin", [this](GtkGesture*, GdkEventSequence*) { pinchedScale_ = layout_.scale(); }));
  connections_.push_back(glib::connect<void(GtkGestureZoom*, double)>(
      pinch, "scale-changed", [this](GtkGestureZoom*, double factor) { setScale(pinchedScale_ * factor); }));
  gtk_widget_add_controller(scroller_.get(), GTK_EVENT_CONTROLLER(pinch));
}

void PagesPart::zoom(Zoom step) {
  switch (step) {
  case Zoom::in:
    return setScale(layout_.scale() * zoomStep);
  case Zoom::out:
    return setScale(layout_.scale() / zoomStep);
  case Zoom::original:
    return setScale(1);
  case Zoom::fit:
    isFitted_ = true;
    arrange();
  }
}

void PagesPart::setScale(double scale) {
  isFitted_ = false;
  layout_.arrange(scale, 0); // within its bounds
  arrange();
}

bool PagesPart::scroll(int step) {
  const auto old = gtk_adjustment_get_value(vertical_);
  gtk_adjustment_set_value(vertical_, old + step * gtk_adjustment_get_step_increment(vertical_));
  return true;
}

double PagesPart::pull(double y) {
  const auto top = gtk_adjustment_get_value(vertical_);
  const auto beyond =
      std::min(y - top, 0.0) + std::max(y - top - gtk_adjustment_get_page_size(vertical_), 0.0);
  gtk_adjustment_set_value(vertical_, top + std::clamp(beyond, -longestPull, longestPull));
  return gtk_adjustment_get_value(vertical_) - top;
}

bool PagesPart::selectAll() {
  if (selection_)
    selection_->selectAll();
  return selection_.has_value();
}

void PagesPart::arrange() {
  const PageLayout::Size room{gtk_adjustment_get_page_size(horizontal_),
                              gtk_adjustment_get_page_size(vertical_)};
  if (room.width <= 1 || room.height <= 1)
    return; // not on screen yet
  const auto x = middle(horizontal_);
  const auto y = middle(vertical_);
  layout_.arrange(isFitted_ ? layout_.fit(room) : layout_.scale(), room.width);
  const auto size = layout_.size();
  gtk_widget_set_size_request(canvas_.get(), static_cast<int>(size.width), static_cast<int>(size.height));
  // A picture smaller than the window is in its middle; pages begin at the top.
  gtk_widget_set_valign(canvas_.get(), isPdf() ? GTK_ALIGN_START : GTK_ALIGN_CENTER);
  const bool isStart = gtk_adjustment_get_value(vertical_) <= 0;
  moveTo(horizontal_, x, size.width);
  moveTo(vertical_, isStart && isPdf() ? 0 : y, size.height);
  gtk_widget_queue_draw(canvas_.get());
  moved_.send();
}

async::Task<void> PagesPart::follow() {
  // On a turn of its own: within a layout no other can be asked for.
  while (co_await resized_.wait())
    arrange();
}

std::pair<std::size_t, std::size_t> PagesPart::visible() const {
  const auto top = gtk_adjustment_get_value(vertical_);
  return layout_.within(top, top + gtk_adjustment_get_page_size(vertical_));
}

void PagesPart::tellPage() {
  const auto [first, end] = visible();
  std::string text;
  if (!isPdf())
    text =
        fmt::format("{} × {}", std::lround(document_->pageWidth(0)), std::lround(document_->pageHeight(0)));
  else if (document_->pageCount() > 1)
    text = base::trFormat("Page {0} of {1}", std::min(first + 1, layout_.boxes().size()),
                          document_->pageCount());
  if (text != told_)
    options_.tell(told_ = text);
}

PagesPart::Wanted PagesPart::wanted(std::size_t page) const {
  const auto& box = layout_.boxes()[page];
  const double pixels = gtk_widget_get_scale_factor(canvas_.get());
  const double width = box.width * pixels;
  const double height = box.height * pixels;
  double shrink = std::min(1.0, std::sqrt(platform::DecodedDocument::mostPixels / (width * height)));
  if (!isPdf()) {
    const auto own = std::max(document_->pageWidth(0), document_->pageHeight(0));
    shrink = std::min(shrink, std::max(own, longestImageSide) / std::max(width, height));
  }
  return {page, std::max(1, static_cast<int>(width * shrink)),
          std::max(1, static_cast<int>(height * shrink))};
}

// What is to be drawn next; what is far away is forgotten.
std::optional<PagesPart::Wanted> PagesPart::missing() {
  const auto [first, end] = visible();
  std::erase_if(shown_, [first, end](const auto& each) {
    return each.first + keptPages < first || each.first >= end + keptPages;
  });
  const auto isMissing = [this](const Wanted& page) {
    const auto found = shown_.find(page.page);
    return found == shown_.end() || found->second.width != page.width || found->second.height != page.height;
  };
  for (auto page = first; page < std::min(end + 1, layout_.boxes().size()); ++page)
    if (const auto next = wanted(page); isMissing(next))
      return next;
  return std::nullopt;
}

async::Task<void> PagesPart::fetch() {
  while (co_await moved_.wait()) {
    if (gtk_adjustment_get_page_size(vertical_) <= 1)
      continue;
    tellPage();
    while (const auto next = missing()) {
      auto picture = co_await document_->render(static_cast<int>(next->page), next->width, next->height);
      if (!picture &&
          (layout_.boxes().size() == 1 || picture.error().kind != platform::DecodeError::Kind::damaged)) {
        const auto failed = options_.failed; // may end this object
        failed(picture.error());
        co_return;
      }
      shown_[next->page] = {next->width, next->height, picture ? textureOf(*picture) : nullptr};
      gtk_widget_queue_draw(canvas_.get());
    }
  }
}

async::Task<void> PagesPart::animate() {
  auto due = async::EventLoop::current().now();
  for (int frame = 0;; frame = (frame + 1) % document_->pageCount()) {
    while (gtk_adjustment_get_page_size(vertical_) <= 1 || !gtk_widget_get_mapped(canvas_.get()))
      if (!co_await async::sleep(100ms))
        co_return;
    tellPage();
    const auto size = wanted(0);
    const auto picture = co_await document_->render(frame, size.width, size.height);
    if (!picture) {
      const auto failed = options_.failed;
      failed(picture.error());
      co_return;
    }
    const auto now = async::EventLoop::current().now();
    if (now < due && !co_await async::sleep(due - now))
      co_return;
    shown_[0] = {size.width, size.height, textureOf(*picture)};
    gtk_widget_queue_draw(canvas_.get());
    due = async::EventLoop::current().now() + document_->frameDelay(frame);
  }
}

void PagesPart::draw(GtkSnapshot* snapshot) {
  const auto [first, end] = visible();
  for (auto page = first; page < end; ++page) {
    const auto& box = layout_.boxes()[page];
    const graphene_rect_t area{{static_cast<float>(box.x), static_cast<float>(box.y)},
                               {static_cast<float>(box.width), static_cast<float>(box.height)}};
    if (isPdf()) {
      graphene_rect_t frame = area;
      graphene_rect_inset(&frame, -1, -1);
      gtk_snapshot_append_color(snapshot, &edge, &frame);
      gtk_snapshot_append_color(snapshot, &white, &area);
    }
    const auto found = shown_.find(page);
    if (found != shown_.end() && found->second.texture)
      gtk_snapshot_append_texture(snapshot, found->second.texture.get(), &area);
    if (selection_)
      selection_->draw(snapshot, page);
  }
}

} // namespace ondrel::ui
