#include "ui/preview/PagesSelection.h"

#include <algorithm>

namespace ondrel::ui {

namespace {

// Pages are white in dark style too.
constexpr GdkRGBA colour{0.21F, 0.52F, 0.89F, 0.35F};
constexpr std::size_t mostTexts = 8; // that are kept

} // namespace

PagesSelection::PagesSelection(platform::DecodedDocument& document, const PageLayout& layout,
                               GtkWidget* canvas)
    : document_(document), layout_(layout), canvas_(canvas) {
  auto* drag = gtk_gesture_drag_new();
  connections_.push_back(glib::connect<void(GtkGestureDrag*, double, double)>(
      drag, "drag-begin", [this](GtkGestureDrag*, double x, double y) { begin(x, y); }));
  connections_.push_back(glib::connect<void(GtkGestureDrag*, double, double)>(
      drag, "drag-update", [this](GtkGestureDrag* gesture, double dx, double dy) {
        double x = 0;
        double y = 0;
        if (gtk_gesture_drag_get_start_point(gesture, &x, &y))
          extend(x + dx, y + dy);
      }));
  gtk_widget_add_controller(canvas, GTK_EVENT_CONTROLLER(drag));
  gtk_widget_set_cursor_from_name(canvas, "text");
}

PagePoint PagesSelection::pointOn(std::size_t page, double x, double y) const {
  const auto& box = layout_.boxes()[page];
  return {(x - box.x) / box.width, (y - box.y) / box.height};
}

void PagesSelection::begin(double x, double y) {
  gtk_widget_grab_focus(canvas_);
  page_.reset();
  range_ = {};
  isAll_ = false;
  const auto page = layout_.within(y, y + 1).first;
  if (page < layout_.boxes().size()) {
    page_ = page;
    from_ = to_ = pointOn(page, x, y);
    if (!texts_.contains(page))
      scope_.spawn(fetch(page));
  }
  gtk_widget_queue_draw(canvas_);
}

void PagesSelection::extend(double x, double y) {
  if (!page_)
    return;
  to_ = pointOn(*page_, x, y);
  update();
}

void PagesSelection::selectAll(std::size_t page) {
  page_ = page;
  isAll_ = true;
  if (!texts_.contains(page))
    scope_.spawn(fetch(page));
  update();
}

void PagesSelection::update() {
  const auto* written = page_ ? text(*page_) : nullptr;
  const bool isClick = from_.x == to_.x && from_.y == to_.y;
  if (!written || (isClick && !isAll_))
    return;
  range_ = isAll_ ? TextRange{0, written->characters.size()} : textBetween(*written, from_, to_);
  gtk_widget_queue_draw(canvas_);
}

const platform::PageText* PagesSelection::text(std::size_t page) const {
  const auto found = texts_.find(page);
  return found != texts_.end() && found->second ? &*found->second : nullptr;
}

async::Task<void> PagesSelection::fetch(std::size_t page) {
  if (texts_.size() >= mostTexts)
    std::erase_if(texts_, [this](const auto& each) { return each.second && each.first != page_; });
  texts_[page].reset();
  auto written = co_await document_.text(static_cast<int>(page));
  // A page whose text can't be read has none to select.
  texts_[page] = written ? std::move(*written) : platform::PageText();
  update();
}

void PagesSelection::draw(GtkSnapshot* snapshot, std::size_t page) const {
  const auto* written = page_ == page ? text(page) : nullptr;
  if (!written || range_.begin == range_.end)
    return;
  const auto& box = layout_.boxes()[page];
  for (const auto& line : lineBoxes(*written, range_)) {
    const graphene_rect_t area{{static_cast<float>(box.x + line.left * box.width),
                                static_cast<float>(box.y + line.top * box.height)},
                               {static_cast<float>((line.right - line.left) * box.width),
                                static_cast<float>((line.bottom - line.top) * box.height)}};
    gtk_snapshot_append_color(snapshot, &colour, &area);
  }
}

bool PagesSelection::copy() const {
  const auto* written = page_ ? text(*page_) : nullptr;
  if (!written || range_.begin == range_.end)
    return false;
  gdk_clipboard_set_text(gtk_widget_get_clipboard(canvas_), selectedText(*written, range_).c_str());
  return true;
}

} // namespace ondrel::ui
