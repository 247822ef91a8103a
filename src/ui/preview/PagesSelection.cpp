#include "ui/preview/PagesSelection.h"

#include "async/sleep.h"

#include <algorithm>
#include <chrono>
#include <utility>

namespace ondrel::ui {

namespace {

// Pages are white in dark style too.
constexpr GdkRGBA colour{0.21F, 0.52F, 0.89F, 0.35F};
constexpr std::size_t keptTexts = 64; // before and behind the last one that was needed
constexpr std::chrono::milliseconds pullPause{40};

} // namespace

TextRange PagesSelection::Span::on(std::size_t page, const platform::PageText& text) const {
  if (isEmpty() || !holds(page))
    return {};
  const bool isFirst = !isAll && page == first.page;
  const bool isLast = !isAll && page == last.page;
  if (isFirst && isLast)
    return textBetween(text, first.point, last.point);
  if (isFirst)
    return textFrom(text, first.point);
  return isLast ? textUpTo(text, last.point) : TextRange{0, text.characters.size()};
}

PagesSelection::PagesSelection(platform::DecodedDocument& document, const PageLayout& layout,
                               GtkWidget* canvas, Pull pull)
    : document_(document), layout_(layout), canvas_(canvas), pull_(std::move(pull)) {
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
  connections_.push_back(glib::connect<void(GtkGestureDrag*, double, double)>(
      drag, "drag-end", [this](GtkGestureDrag*, double, double) { pulling_.stop(); }));
  gtk_widget_add_controller(canvas, GTK_EVENT_CONTROLLER(drag));
  gtk_widget_set_cursor_from_name(canvas, "text");
}

// Between two pages it is the lower one.
PagesSelection::Place PagesSelection::placeAt(double x, double y) const {
  const auto& boxes = layout_.boxes();
  const auto page = std::min(layout_.within(y, y + 1).first, boxes.size() - 1);
  const auto& box = boxes[page];
  return {page, {(x - box.x) / box.width, (y - box.y) / box.height}};
}

void PagesSelection::begin(double x, double y) {
  gtk_widget_grab_focus(canvas_);
  isAll_ = false;
  from_ = to_ = placeAt(x, y);
  gtk_widget_queue_draw(canvas_);
}

void PagesSelection::extend(double x, double y) {
  to_ = placeAt(x, y);
  gtk_widget_queue_draw(canvas_);
  const auto moved = pull_(y);
  pulling_.stop();
  if (moved != 0)
    pulling_ = async::Timer(pullPause, [this, x, y, moved] { extend(x, y + moved); });
}

void PagesSelection::selectAll() {
  isAll_ = true;
  gtk_widget_queue_draw(canvas_);
}

PagesSelection::Span PagesSelection::span() const {
  if (isAll_)
    return {{}, {layout_.boxes().size() - 1, {}}, true};
  return from_.key() < to_.key() ? Span{from_, to_} : Span{to_, from_};
}

async::Task<void> PagesSelection::fetch(std::size_t page) {
  std::erase_if(texts_, [page](const auto& each) {
    return each.second && (each.first + keptTexts < page || each.first > page + keptTexts);
  });
  texts_[page].reset();
  auto written = co_await document_.text(static_cast<int>(page));
  // A page whose text can't be read has none to select.
  texts_[page] = written ? std::move(*written) : platform::PageText();
  gtk_widget_queue_draw(canvas_);
}

void PagesSelection::draw(GtkSnapshot* snapshot, std::size_t page) {
  const auto selected = span();
  if (selected.isEmpty() || !selected.holds(page))
    return;
  const auto [found, isNew] = texts_.try_emplace(page);
  if (isNew)
    scope_.spawn(fetch(page));
  if (!found->second)
    return;
  const auto& box = layout_.boxes()[page];
  for (const auto& line : lineBoxes(*found->second, selected.on(page, *found->second))) {
    const graphene_rect_t area{{static_cast<float>(box.x + line.left * box.width),
                                static_cast<float>(box.y + line.top * box.height)},
                               {static_cast<float>((line.right - line.left) * box.width),
                                static_cast<float>((line.bottom - line.top) * box.height)}};
    gtk_snapshot_append_color(snapshot, &colour, &area);
  }
}

bool PagesSelection::copy() {
  const auto selected = span();
  copying_.cancel();
  if (!selected.isEmpty())
    copying_ = scope_.spawn(gather(selected));
  return !selected.isEmpty();
}

async::Task<void> PagesSelection::gather(Span selected) {
  std::string text;
  for (auto page = selected.first.page; page <= selected.last.page; ++page) {
    const auto written = co_await document_.text(static_cast<int>(page));
    const bool isReplaced = co_await async::cancelled();
    if (isReplaced)
      co_return;
    if (!written)
      continue;
    const auto part = selectedText(*written, selected.on(page, *written));
    text += (text.empty() || part.empty() ? "" : "\n") + part;
  }
  if (!text.empty())
    gdk_clipboard_set_text(gtk_widget_get_clipboard(canvas_), text.c_str());
}

} // namespace ondrel::ui
